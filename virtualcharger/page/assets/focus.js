// Where the keyboard goes when the control that it was at is gone or disabled, mostly by what it did
// itself: to the next one of the same part, and back as soon as the first one can be used again.

import { byId } from "./dom.js";

const kControls = "a[href], button, input, select, [tabindex='0']";
const kParts = "section, nav, header, #alerts";

const isLost = (element) => !element.isConnected || element.matches(":disabled") || element.closest("[hidden]") !== null;

const usable = (root) =>
  [...root.querySelectorAll(kControls)].filter((each) => !isLost(each) && each.checkVisibility());

// What an element stands in, inside its part, and at which place there: [container, place], innermost first.
function trailOf(element) {
  const trail = [];
  const part = element.closest(kParts);
  for (let at = element; part && at !== part; at = at.parentElement) {
    trail.push([at.parentElement, [...at.parentElement.children].indexOf(at)]);
  }
  return trail;
}

function neighbour(trail) {
  for (const [container, place] of trail.filter(([each]) => each.isConnected)) {
    const controls = usable(container);
    const there = container.children[place];
    const isNext = (each) => each === there || there?.compareDocumentPosition(each) & Node.DOCUMENT_POSITION_FOLLOWING;
    if (controls.length > 0) return controls.find(isNext) ?? controls.at(-1);
  }
  return usable(byId("alerts"))[0] ?? usable(byId("daemon"))[0];
}

let left = null;   // gave the focus on
let taken = null;  // to this one

// Does what changes the page.
export function keepFocus(change) {
  const focused = document.activeElement;
  const trail = trailOf(focused);
  // Who works with the pointer looks somewhere else.
  const preventScroll = trail.length > 0 && !focused.matches(":focus-visible");
  change();
  if (trail.length === 0 || (document.activeElement === focused && !isLost(focused))) return;
  const next = !isLost(focused) ? focused : focused === taken && !isLost(left) ? left : neighbour(trail);
  [left, taken] = [focused, next];
  next?.focus({ preventScroll });
}
