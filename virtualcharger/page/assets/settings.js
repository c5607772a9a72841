// The store's keys that the daemon reads: each with its value or "not set", its default, its range.

import { button, el, options, setText } from "./dom.js";
import { cardGroup, word } from "./group.js";

const kOther = "other …";

// A value of the store as it is typed in a step.
const textOf = (value) => (typeof value === "string" ? value : JSON.stringify(value));

function choicesOf({ type, choices }) {
  return type === "bool" ? ["true", "false"] : choices ?? [];
}

function rangeText({ type, minimum, maximum, unit }) {
  return type === "int" ? `${minimum}–${maximum}${unit ? ` ${unit}` : ""}` : "";
}

// What the daemon makes of a value that is not as described; empty for a good one.
function remark({ type, minimum, maximum, default: fallback }, value) {
  if (value === null) return "";
  const found = typeof value === "boolean" ? "bool" : Number.isInteger(value) ? "int" : "string";
  if (found !== type) return `not of type ${type}: an error, and ${textOf(fallback)} holds`;
  if (type !== "int") return "";
  if (value < minimum) return `below the range: ${minimum} holds`;
  return value > maximum ? `above the range: ${maximum} holds` : "";
}

function field(setting, id, set) {
  const choices = choicesOf(setting);
  const fallback = textOf(setting.default);
  if (choices.length === 0) {
    const input = el("input", { id, type: "text", inputMode: "numeric", placeholder: `${fallback} (not set)` });
    input.addEventListener("change", () => input.value.trim() !== "" && set(input.value.trim()));
    return { input, show: (value) => (input.value = value === null ? "" : textOf(value)) };
  }
  const select = el("select", { id });
  select.addEventListener("change", () => set(select.value === "" ? null : select.value));
  const show = (value) => {
    const text = value === null ? "" : textOf(value);
    const known = ["", ...choices].includes(text) ? choices : [...choices, text];
    select.replaceChildren(...options([["", `${fallback || kOther} (not set)`], ...known]));
    select.value = text;
  };
  return { input: select, show };
}

function settingRow(setting, step) {
  const { key, section, text } = setting;
  const id = `setting-${key}`;
  const set = (value) => step(value === null ? `unset ${key}` : `set ${key} ${word(value)}`);
  const { input, show } = field(setting, id, set);
  const unset = button("unset", () => set(null), { "aria-label": `Take ${key} out of the store` });
  const hint = el("span", { className: "hint" });
  let stored;
  // What is being typed is left alone until it is done with.
  input.addEventListener("blur", () => show(stored));
  return {
    root: el("div", { className: "setting" },
      el("label", { htmlFor: id }, el("code", { textContent: key }),
        el("small", { textContent: section === "settings" ? text : `${section}: ${text}` })),
      el("div", { className: "line" }, input, unset,
        el("small", { className: "range", textContent: rangeText(setting) })), hint),
    show(value) {
      unset.disabled = value === null;
      if (stored === value) return;
      stored = value;
      if (document.activeElement !== input || input.tagName === "SELECT") show(value);
      setText(hint, remark(setting, value));
    },
  };
}

export function settings(root, desk) {
  const rows = new Map();
  const problem = el("p", { className: "problem" });
  const list = el("div", { className: "settings" });
  const own = cardGroup(desk, root, problem, list);
  return {
    hello(hello) {
      rows.clear();
      for (const setting of hello.words.settings) rows.set(setting.key, settingRow(setting, own.step));
      list.replaceChildren(...[...rows.values()].map((row) => row.root));
    },
    state(state) {
      setText(problem, state.storeError);
      for (const [key, row] of rows) row.show(state.settings[key] ?? null);
    },
  };
}
