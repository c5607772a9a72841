// The light around the charger, on a logarithmic scale: from darkness over night and day to the sun.

import { el, setText } from "./dom.js";
import { cardGroup } from "./group.js";

// Slider 0 is darkness; above it each 100 are a factor of 10 from 0.1 lux on.
const kSteps = 600;
const kMarks = [[0, "dark"], [25, "night 25"], [667, "day 667"], [100000, "100 000"]];
const kPause = 100;

const luxAt = (place) => (place === 0 ? 0 : Number((10 ** (place / 100 - 1)).toPrecision(3)));
const placeOf = (lux) =>
  lux <= 0 ? 0 : Math.max(0, Math.min(kSteps, Math.round((Math.log10(lux) + 1) * 100)));

export function ambient(root, desk) {
  const slider = el("input", { type: "range", id: "light", min: 0, max: kSteps, step: 1,
    "aria-label": "Ambient light" });
  const exact = el("input", { type: "text", inputMode: "decimal", className: "lux", "aria-label": "Ambient light in lux" });
  const seen = el("p", { className: "muted" });
  const marks = el("div", { className: "marks", "aria-hidden": "true" },
    ...kMarks.map(([lux, text]) => {
      const mark = el("span", { textContent: text });
      mark.style.insetInlineStart = `${placeOf(lux) / kSteps * 100}%`;
      return mark;
    }));
  const own = cardGroup(desk, root,
    el("div", { className: "line" }, seen, el("label", { className: "line" }, exact, "lux")),
    slider, marks);

  let timer = null;
  let wanted = null;   // moved to, and not sent yet
  let busy = false;

  const send = async () => {
    timer = null;
    if (busy || wanted === null) return;
    const lux = wanted;
    wanted = null;
    busy = true;
    await own.step(`light ${lux}`);
    busy = false;
    if (wanted !== null) timer ??= setTimeout(send, kPause);
  };

  slider.addEventListener("input", () => {
    wanted = luxAt(Number(slider.value));
    show(wanted);
    timer ??= setTimeout(send, kPause);
  });
  exact.addEventListener("change", () => own.step(`light ${exact.value.trim()}`));

  const show = (lux) => {
    slider.value = placeOf(lux);
    slider.setAttribute("aria-valuetext", `${lux} lux`);
    if (document.activeElement !== exact) exact.value = lux;
  };

  return {
    state({ light }) {
      if (wanted === null && !busy) show(light.lux);
      setText(seen, light.percent === null ? "" : `the sensor makes it ${light.percent} %`);
    },
  };
}
