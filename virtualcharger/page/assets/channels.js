// What each channel of the lamp plays.

import { el, setText } from "./dom.js";

export function channels(root) {
  const rows = el("tbody");
  root.append(el("table", { className: "channels" },
    el("caption", { className: "unseen", textContent: "What each channel plays" }),
    el("thead", {}, el("tr", {}, ...["channel", "min", "max", "pattern"].map(
      (text) => el("th", { scope: "col", textContent: text })))), rows));

  const cells = [];
  const rowFor = (index) => {
    if (!cells[index]) {
      const [name, ...values] = [el("th", { scope: "row" }), el("td"), el("td"), el("div", { className: "pattern" })];
      cells[index] = [name, ...values];
      rows.append(el("tr", {}, name, values[0], values[1], el("td", {}, values[2])));
    }
    return cells[index];
  };

  return {
    state({ lamp }) {
      lamp.channels.forEach((channel, index) => {
        const playing = channel.trigger === "pattern";
        const texts = [channel.name, channel.minimum, channel.maximum,
          channel.pattern || (playing ? "no pattern" : `trigger ${channel.trigger}`)];
        rowFor(index).forEach((cell, column) => setText(cell, String(texts[column])));
      });
    },
  };
}
