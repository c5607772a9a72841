// Elements, built. Text from elsewhere only ever becomes text nodes and properties, never markup.

// Properties by their names in script ("className", "disabled"), attributes by theirs ("aria-label"),
// listeners under "on".
export function el(tag, properties = {}, ...children) {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(properties)) {
    if (name === "on") {
      for (const [event, listener] of Object.entries(value)) element.addEventListener(event, listener);
    } else if (name in element) {
      element[name] = value;
    } else {
      element.setAttribute(name, value);
    }
  }
  element.append(...children);
  return element;
}

export function button(text, onClick, properties = {}) {
  return el("button", { type: "button", textContent: text, on: { click: onClick }, ...properties });
}

// Options from texts, or from [value, text].
export function options(choices) {
  return choices.map((choice) => {
    const [value, text] = Array.isArray(choice) ? choice : [choice, choice];
    return el("option", { value, textContent: text });
  });
}

// An unchanged text is not written: screen readers would hear it again, and the page lay out anew.
export function setText(element, text) {
  if (element.textContent !== text) element.textContent = text;
}

export function byId(id) {
  return document.getElementById(id);
}

export const words = (name) => name.replaceAll("-", " ");
