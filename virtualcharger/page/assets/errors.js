// Errors and warnings of the catalogue: raised by number or text, ended by their chip.

import { button, el, setText } from "./dom.js";
import { chips } from "./chips.js";
import { combobox } from "./combobox.js";
import { cardGroup } from "./group.js";

export function errors(root, desk) {
  let catalogue = new Map();
  let active = [];
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
  const chip = (identifier) => {
    const { text, kind } = describe(identifier);
    return el("li", { className: `chip ${kind}` },
      el("span", { className: "number", textContent: identifier }), ` ${text} `,
      button("end", () => own.step(`error ${identifier} off`),
        { "aria-label": `End ${kind} ${identifier} ${text}` }));
  };
  const list = chips("Active errors and warnings", chip);
  const own = cardGroup(desk, root, none, list.list, picker.root);

  return {
    hello(hello) {
      catalogue = new Map(hello.words.errors.map((each) => [each.identifier, each]));
      list.clear();
    },
    state(state) {
      active = state.errors;
      list.show(active);
      setText(none, active.length ? "" : "None is active.");
    },
  };
}
