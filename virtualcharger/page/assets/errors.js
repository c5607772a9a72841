// Errors and warnings of the catalogue: raised by number or text, ended by their chip.

import { button, el, setText } from "./dom.js";
import { combobox } from "./combobox.js";
import { cardGroup } from "./group.js";

export function errors(root, desk) {
  let catalogue = new Map();
  let active = [];
  const chips = el("ul", { className: "chips", "aria-label": "Active errors and warnings" });
  const none = el("p", { className: "muted", textContent: "None is active." });
  const describe = (identifier) =>
    catalogue.get(identifier) ?? { identifier, name: "", text: "not in the catalogue", kind: "error" };

  const find = (typed) => {
    const needles = typed.toLowerCase().split(/\s+/);
    const found = [...catalogue.values()].filter((each) => {
      const hay = `${each.identifier} ${each.name} ${each.text} ${each.kind}`.toLowerCase();
      return needles.every((needle) => hay.includes(needle)) && !active.includes(each.identifier);
    });
    const unknown = /^\d+$/.test(typed) && !catalogue.has(Number(typed));
    return unknown ? [...found, describe(Number(typed))] : found;
  };

  const row = ({ identifier, text, kind }) => [
    el("span", { className: `badge ${kind}`, textContent: kind }),
    el("span", { className: "number", textContent: identifier }), ` ${text}`];

  const picker = combobox({ id: "error-picker", label: "Raise an error or warning",
    placeholder: "Raise: number or text", find, show: row,
    choose: ({ identifier }) => own.step(`error ${identifier} on`) });
  const own = cardGroup(desk, root, none, chips, picker.root);

  const chip = (identifier) => {
    const { text, kind } = describe(identifier);
    return el("li", { className: `chip ${kind}` },
      el("span", { className: "number", textContent: identifier }), ` ${text} `,
      button("end", () => own.step(`error ${identifier} off`),
        { "aria-label": `End ${kind} ${identifier} ${text}` }));
  };

  return {
    hello(hello) {
      catalogue = new Map(hello.words.errors.map((each) => [each.identifier, each]));
      active = [];
      chips.replaceChildren();
    },
    state(state) {
      if (String(state.errors) === String(active)) return;
      // The chips that stay are left alone; the focus of one that goes moves to the field.
      const old = new Map(active.map((identifier, index) => [identifier, chips.children[index]]));
      active = state.errors;
      const focused = chips.contains(document.activeElement) && document.activeElement;
      chips.replaceChildren(...active.map((identifier) => old.get(identifier) ?? chip(identifier)));
      if (focused) (chips.contains(focused) ? focused : picker.input).focus();
      setText(none, active.length ? "" : "None is active.");
    },
  };
}
