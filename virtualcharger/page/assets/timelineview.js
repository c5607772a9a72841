// Draws the time line on a canvas.

import { clock } from "./clock.js";
import { kColours, kLanes } from "./lanes.js";
import { palette } from "./frames.js";

const kGap = 6;
const kAxis = 20;
const kSmallFont = "11px system-ui, sans-serif";
const kIntervals = [5_000, 10_000, 30_000, 60_000, 120_000, 300_000];
const kLabelWidth = 74;

export const kGutter = 76;
export const kHeight = kLanes.reduce((sum, { height }) => sum + height + kGap, kAxis);

const kInk = ["ink", "muted", "line", "fill", "bad-fill", "bad-ink", "accent"];
const kTints = kColours.map((colour) => `lamp-${colour}`);

// A tile of stripes for a mode of the lamp, repeated along the time.
function hatch(context, colour, mode) {
  const tile = document.createElement("canvas");
  const slow = mode === "Pulsating";
  tile.width = slow ? 22 : mode === "Flashing" ? 5 : 9;
  tile.height = 1;
  const pen = tile.getContext("2d");
  if (slow) {
    const wave = pen.createLinearGradient(0, 0, tile.width, 0);
    for (const [place, alpha] of [[0, 1], [0.5, 0.35], [1, 1]]) wave.addColorStop(place, withAlpha(colour, alpha));
    pen.fillStyle = wave;
    pen.fillRect(0, 0, tile.width, 1);
  } else {
    pen.fillStyle = withAlpha(colour, 0.3);
    pen.fillRect(0, 0, tile.width, 1);
    pen.fillStyle = colour;
    pen.fillRect(0, 0, Math.ceil(tile.width / 2), 1);
  }
  return context.createPattern(tile, "repeat");
}

const withAlpha = (rgb, alpha) => rgb.replace("rgb(", "rgba(").replace(")", `, ${alpha})`);

export class TimelineView {
  #context;
  #colours = {};
  #hatches = new Map();

  constructor(context) {
    this.#context = context;
  }

  // After the theme has changed.
  refresh() {
    this.#colours = palette([...kInk, ...kTints]);
    this.#hatches.clear();
  }

  // cursor: a time, or null.
  draw(width, history, from, to, cursor) {
    const context = this.#context;
    const x = (time) => kGutter + (time - from) / (to - from) * (width - kGutter);
    context.clearRect(0, 0, width, kHeight);
    this.#axis(x, from, to, width);
    let y = kAxis;
    for (const lane of kLanes) {
      this.#title(lane, y);
      context.save();
      context.beginPath();
      context.rect(kGutter, y - 1, width - kGutter, lane.height + 2);
      context.clip();
      this[`_${lane.draw}`](lane, history, from, to, x, y);
      context.restore();
      y += lane.height + kGap;
    }
    if (cursor !== null) this.#line(x(cursor), this.#colours.accent, 1.5);
  }

  #axis(x, from, to, width) {
    const context = this.#context;
    const interval = kIntervals.find((each) => x(from + each) - x(from) > kLabelWidth) ?? kIntervals.at(-1);
    context.font = kSmallFont;
    context.textBaseline = "middle";
    context.textAlign = "center";
    for (let time = clock.round(from, interval); time < to; time += interval) {
      this.#line(x(time), this.#colours.line, 1);
      context.fillStyle = this.#colours.muted;
      if (time >= 0 && x(time) > kGutter + 24 && x(time) < width - 24) context.fillText(clock.text(time), x(time), 7);
    }
  }

  #line(x, colour, lineWidth) {
    this.#context.fillStyle = colour;
    this.#context.fillRect(Math.round(x), 14, lineWidth, kHeight - 14);
  }

  #title({ title, height }, y) {
    const context = this.#context;
    context.font = kSmallFont;
    context.fillStyle = this.#colours.muted;
    context.textAlign = "right";
    context.textBaseline = "middle";
    context.fillText(title, kGutter - 10, y + height / 2);
  }

  #label(text, left, right, y, height, colour) {
    const context = this.#context;
    const start = Math.max(left, kGutter) + 5;
    if (right - start < 18) return;
    context.font = kSmallFont;
    if (context.measureText(text).width > right - start - 3) return;
    context.fillStyle = colour;
    context.textAlign = "left";
    context.textBaseline = "middle";
    context.fillText(text, start, y + height / 2);
  }

  _lamp({ lane, height, text }, history, from, to, x, y) {
    const context = this.#context;
    for (const { from: begin, to: end, value } of history.between(lane, from, to)) {
      const known = kColours.includes(value.colour.toLowerCase());
      const colour = this.#colours[`lamp-${value.colour.toLowerCase()}`] ?? this.#colours.muted;
      const steady = value.mode === "On" || value.mode === "Off";
      context.fillStyle = value.mode === "Off" ? this.#colours.fill : steady || !known ? colour : this.#hatch(colour, value.mode);
      const wide = Math.max(1, x(end) - x(begin) - 1);
      context.fillRect(x(begin), y, wide, height - 11);
      this.#label(text(value), x(begin) - 4, x(end), y + height - 10, 11, this.#colours.ink);
    }
  }

  #hatch(colour, mode) {
    const key = `${colour} ${mode}`;
    if (!this.#hatches.has(key)) this.#hatches.set(key, hatch(this.#context, colour, mode));
    return this.#hatches.get(key);
  }

  _words({ lane, height, text, bad }, history, from, to, x, y) {
    for (const { from: begin, to: end, value } of history.between(lane, from, to)) {
      const said = text(value);
      if (said === "") continue;
      const wrong = bad?.(value);
      this.#context.fillStyle = wrong ? this.#colours["bad-fill"] : this.#colours.fill;
      this.#context.fillRect(x(begin), y, Math.max(1.5, x(end) - x(begin) - 1), height);
      this.#label(said, x(begin), x(end), y, height, wrong ? this.#colours["bad-ink"] : this.#colours.ink);
    }
  }

  _curve({ lane, height, level, text }, history, from, to, x, y) {
    const context = this.#context;
    const pieces = history.between(lane, from, to).filter(({ value }) => typeof value === "number");
    const at = (value) => y + height - 1 - level(value) * (height - 3);
    context.fillStyle = this.#colours.fill;
    for (const { from: begin, to: end, value } of pieces) {
      context.fillRect(x(begin), at(value), x(end) - x(begin), y + height - at(value));
    }
    context.strokeStyle = this.#colours.muted;
    context.lineWidth = 1.25;
    context.beginPath();
    for (const { from: begin, to: end, value } of pieces) {
      context.lineTo(x(begin), at(value));
      context.lineTo(x(end), at(value));
    }
    context.stroke();
    const last = pieces.at(-1);
    if (!last) return;
    // Where the line is not.
    const place = level(last.value) > 0.5 ? y + height / 2 : y;
    this.#label(text(last.value), Math.max(x(last.from), x(to) - 70), x(to), place, height / 2, this.#colours.ink);
  }

  _tone({ lane, height }, history, from, to, x, y) {
    this.#context.fillStyle = this.#colours.ink;
    for (const { from: begin, to: end, value } of history.between(lane, from, to)) {
      if (value > 0) this.#context.fillRect(x(begin), y + 2, Math.max(2, x(end) - x(begin)), height - 4);
    }
  }

  _moments({ lane, height }, history, from, to, x, y) {
    const context = this.#context;
    const rows = history.within(lane, from, to);
    rows.forEach(({ t, value }, index) => {
      context.fillStyle = this.#colours.accent;
      context.fillRect(x(t), y, 2, height);
      this.#label(value, x(t), x(rows[index + 1]?.t ?? to), y, height, this.#colours.ink);
    });
  }
}
