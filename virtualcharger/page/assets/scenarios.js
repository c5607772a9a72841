// The library's scenarios, played on this charger, and any single step.

import { button, el, options, setText } from "./dom.js";
import { group } from "./group.js";

// As the desk names what leads back to the person's charger.
const kWayBack = "bring-back";

function player(desk) {
  const choice = el("select", { id: "scenario", "aria-label": "Scenario" });
  const about = el("p", { className: "muted" });
  const progress = el("p", { className: "progress" });
  const waiting = el("p", { className: "waiting" });
  let texts = new Map();
  const play = button("Play", () => own.ask({ type: "play", scenario: choice.value }, choice.value));
  const stop = button("Stop", () => own.ask({ type: "stop-play" }, "stop"));
  const back = button("Bring back my charger", () => own.ask({ type: "bring-back" }, "your charger"), { hidden: true });
  const warning = el("p", { className: "muted", textContent:
    "It begins with a new charger; yours can be brought back." });
  const own = group(desk, "Play", el("div", { className: "line" }, choice, play, stop, back), about, warning, progress, waiting);
  const describe = () => setText(about, texts.get(choice.value) ?? "");
  choice.addEventListener("change", describe);
  return {
    root: own.root,
    hello({ words }) {
      const before = choice.value;
      texts = new Map(words.scenarios.map(({ name, text }) => [name, text]));
      choice.replaceChildren(...options([...texts.keys()]));
      choice.value = texts.has(before) ? before : words.scenarios[0]?.name ?? "";
      describe();
    },
    state({ play: now }) {
      const playing = now.scenario !== "" && !now.done;
      play.disabled = playing;
      stop.disabled = !playing;
      back.hidden = !now.back || playing;
      const cameOut = now.scenario === kWayBack ? "your charger is back" : `${now.scenario} came out as expected`;
      setText(progress, now.failed ? `✗ ${now.scenario}:${now.line}: ${now.failed}`
        : now.stopped ? `stopped in ${now.scenario}:${now.line}`
        : playing ? `${now.scenario}:${now.line}  ${now.text}`
        : now.scenario ? `✓ ${cameOut}` : "");
      progress.classList.toggle("problem", now.failed !== "");
      setText(waiting, playing && now.waiting ? `waiting: ${now.waiting}` : "");
    },
  };
}

function anyStep(desk) {
  const input = el("input", { id: "step", type: "text", placeholder: "connector charging", spellcheck: false,
    autocomplete: "off", "aria-label": "A step of the scenario language" });
  const past = [];
  let place = 0;
  const recall = (by) => {
    place = Math.max(0, Math.min(past.length, place + by));
    input.value = past[place] ?? "";
  };
  const send = () => {
    const line = input.value.trim();
    if (line === "") return;
    past.push(line);
    place = past.length;
    input.value = "";
    own.step(line);
  };
  const keys = { Enter: send, ArrowUp: () => recall(-1), ArrowDown: () => recall(1) };
  input.addEventListener("keydown", (event) => {
    if (!keys[event.key]) return;
    event.preventDefault();
    keys[event.key]();
  });
  const own = group(desk, "Any step", el("div", { className: "line" }, input, button("Do", send)));
  return { root: own.root };
}

export function scenarios(root, desk) {
  const parts = [player(desk), anyStep(desk)];
  root.append(...parts.map((part) => part.root));
  return {
    hello: (message) => parts.forEach((part) => part.hello?.(message)),
    state: (message) => parts.forEach((part) => part.state?.(message)),
  };
}
