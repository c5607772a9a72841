// A list of rows that never ends: follows its end unless scrolled up, keeps to a bounded number of
// rows.

import { button, el, setText } from "./dom.js";

const kRows = 2000;
const kNearEnd = 24;

// build(row) gives the element, matches(row) whether the present filter shows it.
export function stream({ label, build, matches }) {
  const list = el("div", { className: "rows", tabIndex: 0, role: "log", "aria-live": "off", "aria-label": label });
  const count = el("span", { className: "muted count" });
  const pause = button("Pause", () => hold(!held));
  let rows = [];       // {data, element or null while it is filtered out or held back}
  let byId = new Map();
  let held = false;
  let behind = 0;
  let dirty = false;

  const trim = () => {
    for (const { data, element } of rows.splice(0, Math.max(0, rows.length - kRows))) {
      element?.remove();
      byId.delete(data.id);
    }
  };

  const draw = () => {
    dirty = false;
    const atEnd = list.scrollHeight - list.scrollTop - list.clientHeight < kNearEnd;
    const fresh = [];
    for (const row of rows) {
      if (row.element !== null || row.hidden) continue;
      row.hidden = !matches(row.data);
      if (!row.hidden) fresh.push(row.element = build(row.data));
    }
    list.append(...fresh);
    if (atEnd) list.scrollTop = list.scrollHeight;
    setText(count, `${list.childElementCount} of ${rows.length}`);
  };

  const later = () => {
    if (dirty || held) return;
    dirty = true;
    requestAnimationFrame(() => !held ? draw() : (dirty = false));
  };

  const hold = (on) => {
    held = on;
    behind = 0;
    pause.classList.toggle("on", held);
    setText(pause, held ? "Go on" : "Pause");
    later();
  };

  const replace = (row, data) => {
    row.data = data;
    if (row.element === null) return;
    const element = build(data);
    row.element.replaceWith(element);
    row.element = element;
  };

  return {
    list, count, pause,
    clear() {
      rows = [];
      byId = new Map();
      list.replaceChildren();
      later();
    },
    add(added) {
      for (const data of added) {
        const known = data.id !== undefined && byId.get(data.id);
        if (known) {
          replace(known, data);
          continue;
        }
        const row = { data, element: null, hidden: false };
        rows.push(row);
        if (data.id !== undefined) byId.set(data.id, row);
        behind += 1;
      }
      if (held) setText(pause, `Go on (${behind} new)`);
      // What is read in peace stays as long as it can.
      if (!held || rows.length > 2 * kRows) trim();
      later();
    },
    // The filter has changed.
    refilter() {
      for (const row of rows) {
        row.element = null;
        row.hidden = false;
      }
      list.replaceChildren();
      draw();
      list.scrollTop = list.scrollHeight;
    },
  };
}

// A search field that filters while one types.
export function searchField(label, onChange) {
  return el("input", { type: "search", placeholder: "Search", "aria-label": label, on: { input: onChange } });
}
