// Keyboard shortcuts, and the dialog that lists them. Single keys can be switched off: speech input
// and restless hands trigger them by mistake.

import { button, byId, el } from "./dom.js";

const click = (id) => () => byId(id)?.click();
const focus = (...selectors) => () => {
  const target = selectors.map((each) => document.querySelector(each)).find((each) => each);
  target?.focus();
  target?.scrollIntoView({ block: "center" });
};

export function keys(timeline) {
  const table = [
    ["?", "this list", click("help")],
    ["e", "enable the daemon", click("enable")],
    ["d", "disable the daemon", click("disable")],
    ["c", "to the connector’s states", focus(".states [aria-pressed=true]", ".states button")],
    ["r", "raise an error or warning", focus("#error-picker")],
    ["l", "to the light slider", focus("#light")],
    ["x", "type any step", focus("#step")],
    ["s", "sound on or off", click("sound")],
    ["t", "to the time line’s cursor", focus("canvas.timeline")],
    ["p", "pause the time line, or go on", () => timeline.togglePause()],
    ["1", "show one minute", () => timeline.zoom(1)],
    ["3", "show three minutes", () => timeline.zoom(3)],
    ["0", "show ten minutes", () => timeline.zoom(10)],
    ["m", "search in the messages", focus("#messages input[type=search]")],
    ["g", "search in the log", focus("#log input[type=search]")],
  ];
  const dialog = byId("shortcuts");
  const on = el("input", { type: "checkbox", id: "keys-on", checked: localStorage.getItem("keys") !== "off" });
  on.addEventListener("change", () => localStorage.setItem("keys", on.checked ? "on" : "off"));
  dialog.append(el("h2", { id: "shortcuts-title", textContent: "Keyboard" }),
    el("dl", { className: "keys" }, ...table.map(([key, text]) =>
      el("div", {}, el("dt", {}, el("kbd", { textContent: key })), el("dd", { textContent: text })))),
    el("label", { className: "check", htmlFor: on.id }, on, "single keys are shortcuts"),
    el("div", { className: "buttons" }, button("Close", () => dialog.close(), { autofocus: true })));
  byId("help").addEventListener("click", () => dialog.showModal());

  addEventListener("keydown", (event) => {
    if (!on.checked || event.ctrlKey || event.altKey || event.metaKey || dialog.open) return;
    if (event.target.matches("input:not([type=range], [type=checkbox]), select, textarea")) return;
    const row = table.find(([key]) => key === event.key);
    if (!row) return;
    event.preventDefault();
    row[2]();
  });
}
