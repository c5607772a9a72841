// The daemon's own log lines, and from which level on it writes them.

import { cardGroup } from "./group.js";
import { el, options } from "./dom.js";
import { searchField, stream } from "./stream.js";
import { clock } from "./clock.js";

const kLevels = ["trace", "debug", "info", "warning", "error", "critical"];

function build(row) {
  return el("div", { className: `row line-of-log level-${row.level}` },
    el("span", { className: "time", textContent: clock.text(row.t, true) }),
    el("span", { className: "level", textContent: kLevels[row.level] ?? row.level }),
    el("span", { className: "thread", textContent: row.thread }),
    el("span", { className: "text", textContent: row.text }));
}

export function log(root, desk) {
  const written = el("select", { id: "log-level", "aria-label": "Level from which on the daemon writes its log" });
  const own = cardGroup(desk, root, el("label", { className: "line", htmlFor: written.id }, "writes", written));
  let present = "";
  const show = () => (written.value = present);
  written.addEventListener("change", async () => await own.step(`log-level ${written.value}`) || show());
  const level = el("select", { "aria-label": "Least level shown" },
    ...options(kLevels.map((name, number) => [number, number === 0 ? "every level" : `${name} and above`])));
  const matches = (row) => {
    const needle = search.value.trim().toLowerCase();
    return row.level >= Number(level.value) &&
      (needle === "" || `${row.thread} ${row.text}`.toLowerCase().includes(needle));
  };
  const lines = stream({ label: "The daemon's log", build, matches });
  const search = searchField("Search in the log", lines.refilter);
  level.addEventListener("change", lines.refilter);
  root.append(el("div", { className: "filters" }, own.root, level, search, lines.pause, lines.count), lines.list);
  return {
    hello(hello) {
      written.replaceChildren(...options(hello.words.logLevels));
      present = "";
      lines.clear();
      lines.add(hello.log);
    },
    state({ logLevel }) {
      // A choice that is open is left alone.
      if (logLevel === present) return;
      present = logLevel;
      show();
    },
    log: ({ rows }) => lines.add(rows),
  };
}
