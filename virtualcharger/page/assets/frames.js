// One animation loop for all that is drawn. Each frame stands for the charger's time from the frame
// before it to itself.

import { clock } from "./clock.js";

// After a pause (a hidden tab) only the last moment is shown.
const kLongestFrame = 250;

// What nobody sees is kept up for those who search the page or hear it.
export const kUnseenPause = 1000;

const drawers = [];
let last = 0;

// Tells whether an element is in sight or nearly so, at first and whenever that has changed.
export function onSight(element, tell) {
  new IntersectionObserver((entries) => tell(entries.at(-1).isIntersecting), { rootMargin: "200px" }).observe(element);
}

// For each frame; where an element is given that is out of sight, only now and then.
export function onFrame(draw, element) {
  const drawer = { draw, isSeen: true, drawn: -Infinity };
  drawers.push(drawer);
  if (element) onSight(element, (isSeen) => (drawer.isSeen = isSeen));
}

export function startFrames() {
  const frame = (moment) => {
    const to = clock.at(moment);
    // Another charger's clock may stand before the last frame's.
    const from = last > to ? to : Math.max(last, to - kLongestFrame);
    last = to;
    for (const drawer of to > from ? drawers : []) {
      if (!drawer.isSeen && moment - drawer.drawn < kUnseenPause) continue;
      drawer.drawn = moment;
      drawer.draw(from, to);
    }
    requestAnimationFrame(frame);
  };
  requestAnimationFrame(frame);
}

// The colours of the style sheet, for canvases. Computed by an element because custom properties
// are handed out as they are written.
export function palette(names) {
  const probe = document.createElement("span");
  // A canvas keeps its colours where the system's replace the page's.
  probe.style.forcedColorAdjust = "none";
  document.body.append(probe);
  const colours = {};
  for (const name of names) {
    probe.style.color = `var(--${name})`;
    colours[name] = getComputedStyle(probe).color;
  }
  probe.remove();
  return colours;
}

// Keeps a canvas as sharp as the screen; calls back with its size in CSS pixels.
export function fitCanvas(canvas, onSize) {
  new ResizeObserver(() => {
    const { clientWidth: width, clientHeight: height } = canvas;
    const ratio = window.devicePixelRatio || 1;
    canvas.width = Math.round(width * ratio);
    canvas.height = Math.round(height * ratio);
    canvas.getContext("2d").setTransform(ratio, 0, 0, ratio, 0, 0);
    onSize(width, height);
  }).observe(canvas);
}
