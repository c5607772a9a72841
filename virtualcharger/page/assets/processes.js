// The daemon and its peers, each of which can be ended, started, and made to stand still.

import { button, el, setText, words } from "./dom.js";
import { cardGroup } from "./group.js";
import { showAge } from "./clock.js";

// Which actions make sense in which state.
const kActions = [
  ["kill", ["running", "frozen", "starting"], "End it at once (SIGKILL)"],
  ["stop", ["running", "starting"], "Ask it to end"],
  ["start", ["stopped", "dead"], "Run it again"],
  ["freeze", ["running"], "Let it stand still (SIGSTOP)"],
  ["thaw", ["frozen"], "Let it go on (SIGCONT)"],
];

function processRow(name, step) {
  const status = el("strong");
  const age = el("span", { className: "muted" });
  const detail = el("span", { className: "muted" });
  const buttons = kActions.map(([action, when, title]) => [when,
    button(action, () => step(`${action} ${name}`), { title, "aria-label": `${action} ${words(name)}` })]);
  const root = el("li", { className: "process" },
    el("span", { className: "dot", "aria-hidden": "true" }), el("span", { textContent: words(name) }),
    el("span", { className: "fact" }, status, age, detail),
    el("span", { className: "buttons small" }, ...buttons.map(([, each]) => each)));
  return {
    root,
    show(process) {
      root.dataset.status = process.status;
      setText(status, process.status);
      setText(detail, process.detail);
      showAge(age, process.since);
      for (const [when, each] of buttons) each.disabled = !when.includes(process.status);
    },
  };
}

export function processes(root, desk) {
  const rows = new Map();
  const list = el("ul", { className: "processes" });
  const own = cardGroup(desk, root, list);
  return {
    hello(hello) {
      rows.clear();
      for (const name of hello.words.processes) rows.set(name, processRow(name, own.step));
      list.replaceChildren(...[...rows.values()].map((row) => row.root));
    },
    state(state) {
      for (const process of state.processes) rows.get(process.name)?.show(process);
    },
  };
}
