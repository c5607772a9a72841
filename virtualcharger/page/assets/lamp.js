// The lamp's light as it was told: for each channel segments [start, duration, level], level 0..1000
// of linear light. What the eye sees in a frame is the mean of the light in it.

// Some are kept behind the frame that is being drawn.
const kKept = 1000;
const kChannels = 3;

// So bright is level 1; below it is nothing. The terminal's swatches use the same numbers.
const kFloor = 48;
const kFull = 1000;

export class Light {
  #channels = [[], [], []];

  // A "lamp" message replaces what was known from its "from" on.
  replace({ from, channels }) {
    this.#channels = this.#channels.map((segments, index) => {
      const kept = segments
        .filter(([start, duration]) => start < from && start + duration > from - kKept)
        .map(([start, duration, level]) => [start, Math.min(duration, from - start), level]);
      return [...kept, ...channels[index]];
    });
  }

  forget() {
    this.#channels = [[], [], []];
  }

  // The mean level of each channel between two times; null where nothing is known of them.
  mean(from, to) {
    const means = this.#channels.map((segments) => meanOf(segments, from, to));
    return means.includes(null) || means.length !== kChannels ? null : means;
  }
}

function meanOf(segments, from, to) {
  let light = 0;
  let known = 0;
  for (const [start, duration, level] of segments) {
    const overlap = Math.min(to, start + duration) - Math.max(from, start);
    if (overlap <= 0) continue;
    light += level * overlap;
    known += overlap;
  }
  return known > 0 ? light / known : null;
}

// 0..255 for one channel of the screen.
export function encode(level) {
  if (level <= 0) return 0;
  const linear = Math.min(level, kFull) / kFull;
  const encoded = linear <= 0.0031308 ? 12.92 * linear : 1.055 * linear ** (1 / 2.4) - 0.055;
  return Math.round(kFloor + (255 - kFloor) * encoded);
}
