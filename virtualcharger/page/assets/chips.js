// A list of what is active, each with the button that ends it.

import { el } from "./dom.js";

// build(key) gives a chip.
export function chips(label, build) {
  const list = el("ul", { className: "chips", "aria-label": label });
  let shown = new Map();
  return {
    list,
    get: (key) => shown.get(key),
    clear() {
      shown = new Map();
      list.replaceChildren();
    },
    // Chips that stay are left alone.
    show(keys) {
      if (keys.length === shown.size && keys.every((key) => shown.has(key))) return;
      shown = new Map(keys.map((key) => [key, shown.get(key) ?? build(key)]));
      list.replaceChildren(...shown.values());
    },
  };
}
