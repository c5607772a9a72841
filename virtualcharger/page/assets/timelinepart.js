// The time line's controls: pause, zoom, and a cursor that reads all lanes at one time, moved by
// the pointer or the arrow keys.

import { button, el, setText } from "./dom.js";
import { clock } from "./clock.js";
import { History } from "./timeline.js";
import { fitCanvas, onFrame } from "./frames.js";
import { kLanes, readLane } from "./lanes.js";
import { kGutter, kHeight, TimelineView } from "./timelineview.js";

const kMinutes = [1, 3, 10];
const kMinute = 60_000;
// Where less motion is asked for, the picture moves on by so much at once.
const kStill = 1000;

export function timelinePart(root) {
  const history = new History();
  const canvas = el("canvas", { className: "timeline", tabIndex: 0, role: "slider", "aria-label":
    "Time, all lanes at the cursor; arrow keys move it", "aria-valuemin": 0, "aria-valuenow": 0 });
  canvas.style.blockSize = `${kHeight}px`;
  const view = new TimelineView(canvas.getContext("2d"));
  const values = kLanes.map(() => el("dd"));
  const moment = el("strong");
  const readout = el("dl", { className: "readout" }, el("div", { className: "moment" }, el("dt", { textContent: "at" }), el("dd", {}, moment)),
    ...kLanes.map(({ title }, index) => el("div", {}, el("dt", { textContent: title }), values[index])));
  const release = button("Back to now", () => {
    hold(false);
    pin(null);
    canvas.focus();
  }, { hidden: true });
  const pause = button("Pause", () => hold(end === null), { id: "pause" });
  const zooms = kMinutes.map((minutes) => button(`${minutes} min`, () => zoom(minutes)));
  root.append(el("div", { className: "filters" }, root.querySelector("h2"), pause, release,
    el("div", { className: "buttons small", role: "group", "aria-label": "Zoom" }, ...zooms),
    el("span", { className: "muted", textContent: "Point, click or use the arrow keys to read a moment; Esc lets it go." })),
    canvas, readout);

  let width = 0;
  let span = kMinutes[0] * kMinute;
  let end = null;      // of the time shown, while it is held
  let pinned = null;   // the cursor where it was put
  let hover = null;
  let drawn = "";

  const still = matchMedia("(prefers-reduced-motion: reduce)");
  const shownEnd = () => end ?? (still.matches ? Math.floor(clock.now() / kStill) * kStill : clock.now());
  const cursor = () => hover ?? pinned;
  const timeAt = (event) => {
    const place = (event.offsetX - kGutter) / (width - kGutter);
    return shownEnd() - span + Math.max(0, Math.min(1, place)) * span;
  };

  const read = () => {
    const time = cursor() ?? shownEnd();
    setText(moment, cursor() === null ? `now, ${clock.text(time)}` : clock.text(time, true));
    const texts = kLanes.map((lane) => readLane(history, lane, time));
    texts.forEach((text, index) => setText(values[index], text || "–"));
    return texts;
  };

  // Said by a screen reader when the cursor moves, not with each change.
  const announce = () => {
    const texts = read();
    canvas.setAttribute("aria-valuemax", Math.round(clock.now()));
    canvas.setAttribute("aria-valuenow", Math.round(cursor() ?? shownEnd()));
    canvas.setAttribute("aria-valuetext", `${moment.textContent}: ${kLanes.map(({ title }, index) =>
      texts[index] && `${title} ${texts[index]}`).filter(Boolean).join(", ")}`);
  };

  const pin = (time) => {
    pinned = time === null ? null : Math.max(0, Math.min(time, clock.now()));
    if (pinned !== null && pinned < shownEnd() - span) hold(true, pinned + span);
    if (pinned !== null && end !== null && pinned > end) hold(true, pinned);
    release.hidden = pinned === null;
    announce();
  };

  const hold = (on, at = clock.now()) => {
    end = on ? at : null;
    setText(pause, on ? "Go on" : "Pause");
    pause.classList.toggle("on", on);
  };

  const zoom = (minutes) => {
    span = minutes * kMinute;
    zooms.forEach((each, index) => each.setAttribute("aria-pressed", kMinutes[index] === minutes));
  };

  const keys = { ArrowLeft: -1, ArrowRight: 1, PageUp: -10, PageDown: 10 };
  canvas.addEventListener("keydown", (event) => {
    const step = (span / kMinute) * (event.shiftKey ? 5000 : 500);
    if (keys[event.key]) pin((pinned ?? shownEnd()) + keys[event.key] * step);
    else if (event.key === "Home") pin(0);
    else if (event.key === "End") { hold(false); pin(clock.now()); }
    else if (event.key === "Escape") pin(null);
    else return;
    event.preventDefault();
  });
  canvas.addEventListener("focus", announce);
  canvas.addEventListener("pointermove", (event) => (hover = timeAt(event)));
  canvas.addEventListener("pointerleave", () => (hover = null));
  canvas.addEventListener("click", (event) => pin(timeAt(event)));
  addEventListener("themechange", () => (drawn = ""));
  fitCanvas(canvas, (newWidth) => {
    width = newWidth;
    drawn = "";
  });
  zoom(kMinutes[0]);
  hold(false);

  onFrame(() => {
    if (width === 0) return;
    if (drawn === "") view.refresh();
    // A picture for each pixel that the time moves by is enough.
    const to = shownEnd();
    const key = `${span} ${Math.round(to / span * width)} ${cursor()}`;
    if (key === drawn) return;
    drawn = key;
    view.draw(width, history, to - span, to, cursor());
    read();
  }, root);

  return {
    hello(hello) {
      history.clear();
      history.add(hello.timeline);
      hold(false);
      hover = null;
      pin(null);
    },
    timeline: ({ rows }) => history.add(rows),
    togglePause: () => hold(end === null),
    zoom,
  };
}
