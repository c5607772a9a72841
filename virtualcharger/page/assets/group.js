// A group of controls with the note of what came of the last one: every control is one step of the
// scenario language, sent with its group's step().

import { el, setText } from "./dom.js";

const kNoteStays = 5000;

let lastGroup = 0;

// A word of a step: in quotes where it needs them.
export function word(text) {
  return text === "" || /[\s"#]/.test(text) ? `"${text.replaceAll('"', "")}"` : text;
}

// desk: as connect() gives it. The root is a fieldset, so that it can be disabled as a whole.
export function group(desk, title, ...children) {
  const heading = el("h3", { id: `group-${++lastGroup}`, textContent: title });
  const note = el("output", { className: "note", role: "status" });
  const root = el("fieldset", { className: "group steer", "aria-labelledby": heading.id },
    el("div", { className: "grouphead" }, heading, note), ...children);
  return { root, heading, ...asker(desk, note) };
}

// The one group of a card: its note stands beside the card's own heading.
export function cardGroup(desk, card, ...children) {
  const heading = card.querySelector("h2");
  const note = el("output", { className: "note", role: "status" });
  const head = el("div", { className: "grouphead" });
  heading.replaceWith(head);
  head.append(heading, note);
  const root = el("fieldset", { className: "group steer", "aria-labelledby": heading.id }, ...children);
  card.append(root);
  return { root, ...asker(desk, note) };
}

function asker(desk, note) {
  let tries = 0;

  const show = (kind, text) => {
    note.className = `note ${kind}`;
    setText(note, text);
  };

  const ask = async (message, name) => {
    const own = ++tries;
    show("busy", `${name} …`);
    const { ok, text } = await desk.ask(message);
    if (own !== tries) return ok;
    show(ok ? "good" : "bad", ok ? `✓ ${text || name}` : `✗ ${text}`);
    // A success has been seen after a while; an error stays until the next try.
    if (ok) setTimeout(() => own === tries && show("", ""), kNoteStays);
    return ok;
  };

  return { ask, step: (line) => ask({ type: "step", line }, line) };
}
