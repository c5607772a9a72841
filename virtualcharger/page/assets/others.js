// The other chargers of this user, a tile for each: its lamp, which that charger's own server draws in
// a frame, and over all of it a link that opens its page in a tab of its own, ready to steer.

import { el } from "./dom.js";

// A tab keeps the name of the charger that it shows, so that a link finds the tab that is open.
const tabName = (name) => `charger-${name}`;

function tileOf({ name, url }) {
  const link = el("a", { textContent: name, target: tabName(name), "aria-label": `${name}: open its page` });
  // Nothing in the frame can be steered or focused. It needs its origin to be heard by its server.
  const frame = el("iframe", { title: `The lamp of ${name}`, tabIndex: -1,
    sandbox: "allow-scripts allow-same-origin", src: new URL("lamp", url).href });
  const root = el("li", { className: "tile" }, link, frame);
  return { root, aim: (tokens) => (link.href = tokens[name] ? `${url}#${tokens[name]}` : url) };
}

export function others(root) {
  const tiles = new Map();
  const row = el("ul");
  root.append(row);
  let tokens = {};

  const aim = (message) => {
    tokens = message.tokens ?? {};
    tiles.forEach((tile) => tile.aim(tokens));
  };

  return {
    hello(hello) {
      window.name = tabName(hello.name);
      aim(hello);
    },
    tokens: aim,
    // By name, as they come. A tile that stays is not touched: a frame that moves loads anew.
    state({ others: chargers }) {
      const keys = chargers.map(({ name, url }) => `${name} ${url}`);
      for (const [key, tile] of tiles) {
        if (keys.includes(key)) continue;
        tile.root.remove();
        tiles.delete(key);
      }
      chargers.forEach((charger, place) => {
        if (tiles.has(keys[place])) return;
        const tile = tileOf(charger);
        tile.aim(tokens);
        tiles.set(keys[place], tile);
        row.insertBefore(tile.root, row.children[place] ?? null);
      });
      root.hidden = tiles.size === 0;
    },
  };
}
