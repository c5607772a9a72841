// Where the page is one long column: the lamp stays in sight at the top, links to the parts at the
// bottom.

import { byId } from "./dom.js";

export function places() {
  // What stays in sight must not cover what is jumped to or has the focus: the style sheet needs its
  // height, which depends on the words in it.
  for (const bar of [byId("alerts"), byId("face")]) {
    new ResizeObserver(() =>
      document.documentElement.style.setProperty(`--${bar.id}-height`, `${bar.offsetHeight}px`)).observe(bar);
  }
  // Browsers take half a link for enough. Not under a finger, which would miss it.
  byId("places").addEventListener("focusin", ({ target }) =>
    target.matches(":focus-visible") && target.scrollIntoView({ block: "nearest", inline: "nearest" }));
}
