// A list of rows that never ends. A bounded number of them is kept; in the document stand only the
// newest ones while its end is followed, or those around what is read.

import { button, el, setText } from "./dom.js";
import { kUnseenPause, onSight } from "./frames.js";

const kKept = 2000;
const kShown = 200;
const kStride = 100;    // so many rows further the shown ones begin, near one of their ends
const kNearEnd = 24;
const kNearEdge = 600;

// Makes the children of a list the elements of the rows. Those that stay are not touched.
function place(list, before, rows, build) {
  const stay = new Set(rows);
  for (const row of before) if (!stay.has(row)) row.element.remove();
  let next = null;
  for (const row of rows.toReversed()) {
    if (row.built !== row.data) {
      row.element?.remove();
      row.element = build(row.data);
      row.built = row.data;
    }
    const { parentNode, nextSibling } = row.element;
    if (parentNode !== list || nextSibling !== next) list.insertBefore(row.element, next);
    next = row.element;
  }
}

// build(row) gives the element, matches(row) whether the present filter shows it.
export function stream({ label, build, matches }) {
  const inner = el("div");
  const list = el("div", { className: "rows", tabIndex: 0, role: "log", "aria-live": "off", "aria-label": label }, inner);
  const count = el("span", { className: "muted count" });
  const pause = button("Pause", () => hold(!held));
  let rows = [];       // {number, data, fits: undefined until it is asked, built: the data in element}
  let waiting = [];    // came while the list is held
  let byId = new Map();
  let shown = [];
  let first = null;    // where the shown rows begin, null while the end is followed
  let isNewest = true; // whether they end with the newest one
  let lastNumber = 0;
  let behind = 0;
  let held = false;
  let isSeen = false;
  let dirty = false;

  const fitting = () => rows.filter((row) => (row.fits ??= matches(row.data)));

  const draw = () => {
    dirty = false;
    const all = fitting();
    setText(count, `${all.length} of ${rows.length}`);
    const newest = Math.max(0, all.length - kShown);
    const start = first ? all.findIndex(({ number }) => number >= first.number) : -1;
    const begin = start < 0 ? newest : Math.min(start, newest);
    const wanted = all.slice(begin, begin + kShown);
    isNewest = wanted.at(-1) === all.at(-1);
    const same = wanted.length === shown.length &&
      wanted.every((row, index) => row === shown[index] && row.built === row.data);
    if (same) return;
    // What is read must not move; the end follows by itself, without a look at the layout.
    const anchor = first && shown.find((row) => wanted.includes(row));
    const top = anchor?.element.getBoundingClientRect().top;
    place(inner, shown, wanted, build);
    shown = wanted;
    if (anchor) list.scrollTop += anchor.element.getBoundingClientRect().top - top;
  };

  const later = () => {
    if (dirty) return;
    dirty = true;
    if (isSeen) requestAnimationFrame(draw);
    else setTimeout(draw, kUnseenPause);
  };

  // The list counts from its end: 0 there, less above it.
  list.addEventListener("scroll", () => {
    const below = -list.scrollTop;
    const above = list.scrollHeight - list.clientHeight - below;
    const all = fitting();
    const by = above < kNearEdge ? -kStride : below < kNearEdge && !isNewest ? kStride : 0;
    first = below < kNearEnd && isNewest ? null : all[Math.max(0, all.indexOf(shown[0]) + by)];
    later();
  });

  const goTo = (row, scrollTop) => {
    first = row;
    draw();
    list.scrollTop = scrollTop;
  };
  const toEnd = () => goTo(null, 0);
  const keys = { End: toEnd, Home: () => goTo(fitting()[0], -list.scrollHeight) };
  list.addEventListener("keydown", (event) => {
    if (!keys[event.key]) return;
    event.preventDefault();
    keys[event.key]();
  });

  onSight(list, (now) => {
    isSeen = now;
    if (isSeen && dirty) draw();
  });

  const trim = (some, most) => {
    for (const { data } of some.splice(0, Math.max(0, some.length - most))) byId.delete(data.id);
  };

  const take = (data) => {
    const known = data.id !== undefined && byId.get(data.id);
    if (known) {
      Object.assign(known, { data, fits: undefined });
      return;
    }
    const row = { number: ++lastNumber, data };
    (held ? waiting : rows).push(row);
    if (data.id !== undefined) byId.set(data.id, row);
    behind += 1;
  };

  const refresh = () => {
    setText(pause, !held ? "Pause" : behind ? `Go on (${behind} new)` : "Go on");
    trim(waiting, kKept);
    // What is read in peace stays as long as it can.
    trim(rows, first ? 2 * kKept : kKept);
    later();
  };

  const hold = (on) => {
    held = on;
    behind = 0;
    rows.push(...waiting.splice(0));
    pause.classList.toggle("on", held);
    refresh();
  };

  return {
    list, count, pause,
    clear() {
      rows = [];
      waiting = [];
      byId = new Map();
      first = null;
      hold(false);
    },
    add(added) {
      added.forEach(take);
      refresh();
    },
    // The filter has changed.
    refilter() {
      for (const row of rows.concat(waiting)) row.fits = undefined;
      toEnd();
    },
  };
}

// A search field that filters while one types.
export function searchField(label, onChange) {
  return el("input", { type: "search", placeholder: "Search", "aria-label": label, on: { input: onChange } });
}
