// The charger's clock: milliseconds since its begin. A message is never early, so the smallest
// difference seen between our clock and the time in a message is the best one.

let difference = Infinity;
let beginAt = Date.now();

export const clock = {
  // A greeting: maybe of another charger, with another begin.
  restart(hello) {
    difference = Infinity;
    beginAt = Date.parse(hello.begin);
  },
  hear(now) {
    difference = Math.min(difference, performance.now() - now);
  },
  now() {
    return clock.at(performance.now());
  },
  // The charger's time at a moment of performance.now().
  at(moment) {
    return difference === Infinity ? 0 : moment - difference;
  },
  // The first time from a given one on at which the wall clock is a multiple of an interval.
  round(time, interval) {
    return Math.ceil((beginAt + time) / interval) * interval - beginAt;
  },
  // "12:03:04" or "12:03:04.567", the wall clock of a time.
  text(time, fraction = false) {
    const date = new Date(beginAt + time);
    const two = (number) => String(number).padStart(2, "0");
    const seconds = `${two(date.getHours())}:${two(date.getMinutes())}:${two(date.getSeconds())}`;
    return fraction ? `${seconds}.${String(date.getMilliseconds()).padStart(3, "0")}` : seconds;
  },
};

// "3.2 s", "4 min 5 s"
export function durationText(milliseconds) {
  const seconds = Math.max(0, milliseconds) / 1000;
  if (seconds < 10) return `${seconds.toFixed(1)} s`;
  if (seconds < 60) return `${Math.floor(seconds)} s`;
  const minutes = Math.floor(seconds / 60);
  if (minutes < 60) return `${minutes} min ${Math.floor(seconds % 60)} s`;
  return `${Math.floor(minutes / 60)} h ${minutes % 60} min`;
}

// Keeps the text of an element at the time that has gone by since; null: no text.
export function showAge(element, since) {
  if (since === null) {
    delete element.dataset.since;
    element.textContent = "";
  } else {
    element.dataset.since = since;
    refresh(element);
  }
}

function refresh(element) {
  const text = durationText(clock.now() - Number(element.dataset.since));
  if (element.textContent !== text) element.textContent = text;
}

setInterval(() => document.querySelectorAll("[data-since]").forEach(refresh), 500);
