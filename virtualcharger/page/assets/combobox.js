// A text field with a list that narrows while one types; arrow keys, Enter and Escape as in any
// combobox.

import { el } from "./dom.js";

const kShown = 60;

// find(text) gives the choices for what was typed, choose(choice) takes one, show(choice) gives the
// nodes of its row. The list of an empty field is complete.
export function combobox({ id, label, placeholder, find, choose, show }) {
  const list = el("ul", { id: `${id}-list`, role: "listbox", hidden: true, "aria-label": label });
  const input = el("input", { id, type: "text", placeholder, role: "combobox", autocomplete: "off",
    spellcheck: false, "aria-label": label, "aria-expanded": "false", "aria-controls": list.id,
    "aria-autocomplete": "list" });
  let choices = [];
  let active = 0;

  const mark = (index) => {
    active = index;
    [...list.children].forEach((row, place) => row.setAttribute("aria-selected", place === active));
    const row = list.children[active];
    row?.scrollIntoView({ block: "nearest" });
    if (row) input.setAttribute("aria-activedescendant", row.id);
    else input.removeAttribute("aria-activedescendant");
  };

  const close = () => {
    list.hidden = true;
    input.setAttribute("aria-expanded", "false");
    input.removeAttribute("aria-activedescendant");
  };

  const open = () => {
    choices = find(input.value.trim()).slice(0, kShown);
    list.replaceChildren(...choices.map((choice, index) => el("li",
      { id: `${id}-${index}`, role: "option", on: { pointerdown: (event) => {
        event.preventDefault();
        take(choice);
      } } }, ...show(choice))));
    list.hidden = choices.length === 0;
    input.setAttribute("aria-expanded", !list.hidden);
    mark(0);
  };

  const take = (choice) => {
    input.value = "";
    close();
    choose(choice);
  };

  const keys = {
    ArrowDown: () => (list.hidden ? open() : mark(Math.min(active + 1, choices.length - 1))),
    ArrowUp: () => (list.hidden ? open() : mark(Math.max(active - 1, 0))),
    Enter: () => !list.hidden && choices[active] !== undefined && take(choices[active]),
    Escape: close,
  };
  input.addEventListener("input", open);
  input.addEventListener("click", open);
  input.addEventListener("blur", close);
  input.addEventListener("keydown", (event) => {
    if (!keys[event.key]) return;
    if (event.key !== "Escape" || !list.hidden) event.preventDefault();
    keys[event.key]();
  });
  return { root: el("div", { className: "combobox" }, input, list), input };
}
