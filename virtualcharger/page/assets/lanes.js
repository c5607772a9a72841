// The lanes of the time line: their names, how they are drawn, how their values read.

import { words } from "./dom.js";

export const kColours = ["red", "green", "blue", "yellow", "white"];

const percentText = (value) => (typeof value === "number" ? `${value} %` : value ?? "");

const lampText = ({ colour, mode, percent }) =>
  mode === "Off" ? "off" : `${colour} ${mode}${percent ? `, ${percent}` : ""}`.trim().toLowerCase();

const scale = (least, most) => (value) => Math.max(0, Math.min(1, (value - least) / (most - least)));
const percentScale = scale(0, 100);
const luxScale = (lux) => (lux <= 0 ? 0 : scale(-1, 5)(Math.log10(lux)));

// Who is starting is on the way.
const isTrouble = (status) => /dead|frozen|stopped/.test(status);

// draw: the kind of drawing; text: a value for people; level: its height, 0..1.
export const kLanes = [
  { lane: "step", title: "steps", height: 16, draw: "moments", text: (value) => value },
  { lane: "lamp", title: "lamp", height: 26, draw: "lamp", text: lampText },
  { lane: "daemon", title: "daemon", height: 18, draw: "words", text: words, bad: isTrouble },
  { lane: "peers", title: "peers", height: 18, draw: "words", text: words, bad: isTrouble },
  { lane: "lifecycle", title: "lifecycle", height: 18, draw: "words", text: words, bad: (value) => /error/.test(value) },
  { lane: "connector", title: "connector", height: 18, draw: "words", text: words },
  { lane: "error", title: "errors", height: 18, draw: "words", text: (value) => value.join(", "), bad: (value) => value.length > 0 },
  { lane: "light", title: "light", height: 30, draw: "curve", level: luxScale, text: (value) => `${value} lux` },
  { lane: "brightness", title: "brightness", height: 30, draw: "curve", level: percentScale, text: percentText },
  { lane: "display", title: "display", height: 30, draw: "curve", level: percentScale, text: percentText },
  { lane: "tone", title: "beeps", height: 16, draw: "tone", text: (hz) => (hz > 0 ? `${hz} Hz` : "silent") },
];

// What a lane says at a time. Steps are moments: the last one of the second before, and how many
// more there were in it.
export function readLane(history, { lane, text }, time) {
  if (lane === "step") {
    const steps = history.within(lane, time - 1000, time);
    return steps.length > 1 ? `${steps.at(-1).value} (+${steps.length - 1})` : steps[0]?.value ?? "";
  }
  const value = history.at(lane, time);
  return value === undefined || value === null || value === "" ? "" : text(value);
}
