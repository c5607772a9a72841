// What happens around the charger: the board controller, the connector, the card reader.

import { button, el, setText, words } from "./dom.js";
import { group } from "./group.js";
import { showAge } from "./clock.js";

// A fact with the time since when it holds.
function fact() {
  const value = el("strong");
  const age = el("span", { className: "muted" });
  const root = el("p", { className: "fact" }, value, age);
  return { root, show: (text, since) => (setText(value, text), showAge(age, text ? since : null)) };
}

function lifecycle(desk) {
  const state = fact();
  const alive = el("span", { className: "muted" });
  const own = group(desk, "Lifecycle", el("div", { className: "buttons" },
    button("Enable", () => own.step("enable"), { id: "enable" }),
    button("Disable", () => own.step("disable"), { id: "disable" })));
  own.heading.after(state.root);
  state.root.append(alive);
  return {
    root: own.root,
    state(message) {
      state.show(words(message.lifecycle.state) || "nothing reported", message.lifecycle.since);
      setText(alive, `alive ×${message.alive.count}`);
    },
  };
}

function connector(desk) {
  const state = fact();
  const buttons = new Map();
  const list = el("div", { className: "states" });
  const own = group(desk, "Connector", list);
  own.heading.after(state.root);
  return {
    root: own.root,
    hello(hello) {
      buttons.clear();
      for (const { name, number } of hello.words.connectorStates) {
        buttons.set(name, el("button", { type: "button", on: { click: () => own.step(`connector ${name}`) } },
          el("span", { className: "number", textContent: number, "aria-hidden": "true" }), words(name)));
      }
      list.replaceChildren(...buttons.values());
    },
    state(message) {
      state.show(words(message.connector.state), message.connector.since);
      for (const [name, each] of buttons) {
        each.setAttribute("aria-pressed", name === message.connector.state);
      }
    },
  };
}

function card(desk) {
  const own = group(desk, "Card reader", el("div", { className: "buttons" },
    ...["accepted", "refused", "swiped"].map((what) => button(what, () => own.step(`card ${what}`))),
    button("identify", () => own.step("identify"))));
  return { root: own.root };
}

export function controls(root, desk) {
  const parts = [lifecycle(desk), connector(desk), card(desk)];
  root.append(...parts.map((part) => part.root));
  return {
    hello: (message) => parts.forEach((part) => part.hello?.(message)),
    state: (message) => parts.forEach((part) => part.state?.(message)),
  };
}
