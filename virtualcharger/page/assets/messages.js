// Everything that crosses the wire between the daemon and its peers.

import { el, options, words } from "./dom.js";
import { searchField, stream } from "./stream.js";
import { clock } from "./clock.js";

const kKinds = [["", "every kind"], ["call", "calls"], ["notification", "notifications"], ["report", "reports"]];

// The daemon is always one end; the other one is named.
const way = ({ from, to }) => (from === "daemon" ? `→ ${words(to)}` : `← ${words(from)}`);

function build(row) {
  const pending = row.ms === null;
  const verdict = pending ? "…" : row.verdict;
  return el("div", { className: `row message ${row.ok || pending ? "" : "bad"}`, title: `${row.from} → ${row.to}, ${row.service}.${row.method}` },
    el("span", { className: "time", textContent: clock.text(row.t, true) }),
    el("span", { className: "way", textContent: way(row) }),
    el("span", { className: "what" }, el("span", { className: "method", textContent: row.method }), ` ${row.text}`),
    el("span", { className: "verdict", textContent: verdict }),
    el("span", { className: "ms", textContent: pending ? "" : `${row.ms.toFixed(1)} ms` }));
}

export function messages(root) {
  const peer = el("select", { "aria-label": "Messages of" });
  const kind = el("select", { "aria-label": "Kind of message" }, ...options(kKinds));
  const matches = (row) => {
    if (peer.value && row.from !== peer.value && row.to !== peer.value) return false;
    if (kind.value && row.kind !== kind.value) return false;
    const needle = search.value.trim().toLowerCase();
    return needle === "" ||
      `${row.from} ${row.to} ${row.service}.${row.method} ${row.text} ${row.verdict}`.toLowerCase().includes(needle);
  };
  const own = stream({ label: "Messages", build, matches });
  const search = searchField("Search in messages", own.refilter);
  for (const each of [peer, kind]) each.addEventListener("change", own.refilter);
  root.append(el("div", { className: "filters" }, peer, kind, search, own.pause, own.count), own.list);
  return {
    hello(hello) {
      const before = peer.value;
      const peers = hello.words.processes.filter((name) => name !== "daemon");
      peer.replaceChildren(...options([["", "every peer"], ...peers]));
      peer.value = peers.includes(before) ? before : "";
      own.clear();
      own.add(hello.messages);
    },
    messages: ({ rows }) => own.add(rows),
  };
}
