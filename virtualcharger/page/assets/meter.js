// The meter's display, which gets as dark as the daemon set it, and whether the meter takes it.

import { el, setText } from "./dom.js";
import { cardGroup } from "./group.js";

// Below this a real display cannot be read any more; the text beside it stays readable.
const kDarkest = 0.08;

export function meter(root, desk) {
  const screen = el("div", { className: "screen", "aria-hidden": "true" },
    el("span", { textContent: "0012.4" }), el("small", { textContent: "kWh" }));
  const percent = el("p", { className: "figure" });
  const accepts = el("input", { type: "checkbox", id: "meter-accepts", on: {
    change: () => own.step(`meter ${accepts.checked ? "accepts" : "refuses"}`) } });
  const own = cardGroup(desk, root, el("div", { className: "lcd" }, screen), percent,
    el("label", { className: "check", htmlFor: accepts.id }, accepts, "takes a new one"));

  return {
    state({ display }) {
      const known = display.percent !== null;
      screen.style.opacity = known ? kDarkest + (1 - kDarkest) * display.percent / 100 : kDarkest;
      setText(percent, known ? `${display.percent} %` : "never set");
      accepts.checked = display.accepts;
    },
  };
}
