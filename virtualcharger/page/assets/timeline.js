// What was when: for each lane rows of which each holds until the lane's next one.

const kKept = 10 * 60 * 1000;

export class History {
  #lanes = new Map();

  clear() {
    this.#lanes.clear();
  }

  // Rows {t, lane, value} in the order of time. An error's beginning or end becomes the list of all
  // that are active.
  add(rows) {
    for (const { t, lane, value } of rows) {
      const own = this.#rows(lane);
      own.push({ t, value: lane === "error" ? changed(own.at(-1)?.value ?? [], value) : value });
      if (own[1]?.t < t - kKept) own.shift();
    }
  }

  // What held at a time; undefined before the first row.
  at(lane, time) {
    const rows = this.#rows(lane);
    return rows[after(rows, time) - 1]?.value;
  }

  // The pieces [{from, to, value}] that touch an interval, cut to it.
  between(lane, from, to) {
    const rows = this.#rows(lane);
    const pieces = [];
    for (let index = Math.max(0, after(rows, from) - 1); index < rows.length && rows[index].t < to; ++index) {
      const end = Math.min(to, rows[index + 1]?.t ?? to);
      if (end > from) pieces.push({ from: Math.max(from, rows[index].t), to: end, value: rows[index].value });
    }
    return pieces;
  }

  // The rows inside an interval, for lanes whose rows are moments.
  within(lane, from, to) {
    const rows = this.#rows(lane);
    return rows.slice(after(rows, from), after(rows, to));
  }

  #rows(lane) {
    if (!this.#lanes.has(lane)) this.#lanes.set(lane, []);
    return this.#lanes.get(lane);
  }
}

function changed(active, { identifier, on }) {
  const others = active.filter((each) => each !== identifier);
  return on ? [...others, identifier] : others;
}

// The place of the first row that begins after a time.
function after(rows, time) {
  let low = 0;
  let high = rows.length;
  while (low < high) {
    const middle = (low + high) >> 1;
    if (rows[middle].t <= time) low = middle + 1;
    else high = middle;
  }
  return low;
}
