// Faults of the hardware: pick a place and a fault, and break it. Each place shows what is wrong
// with it now, and each fault can be healed by itself.

import { button, el, setText } from "./dom.js";
import { chips } from "./chips.js";
import { cardGroup, word } from "./group.js";

const kAll = "all";
const kTakes = { time: ["500ms", "so much longer, as 500ms or 2s"], text: ["nan", "the text that reads give"] };

const nameOf = (place) => place === `${kAll} ${kAll}` ? "every device" : place;
const shorter = (attribute) => attribute.replace("in_illuminance_", "").replace("_pattern_brightness", "");

// A row of buttons of which one is picked.
function picker(onPick) {
  const buttons = new Map();
  return {
    add(key, text, properties = {}) {
      const each = button(text, () => onPick(key), properties);
      buttons.set(key, each);
      return each;
    },
    mark: (picked) =>
      buttons.forEach((each, key) => each.setAttribute("aria-pressed", key === picked)),
    clear: () => buttons.clear(),
    get: (key) => buttons.get(key),
    keys: () => [...buttons.keys()],
  };
}

export function faults(root, desk) {
  let place = `${kAll} ${kAll}`;
  let fault = "";
  let takes = new Map();
  const places = picker((key) => ((place = key), refresh()));
  const kinds = picker((key) => ((fault = key), refresh()));
  const grid = el("div", { className: "places", role: "group", "aria-label": "Where" });
  const list = el("div", { className: "buttons small", role: "group", "aria-label": "What" });
  const parameter = el("input", { type: "text", className: "short", "aria-label": "Parameter of the fault" });
  const times = el("input", { type: "text", inputMode: "numeric", className: "short", placeholder: "always",
    "aria-label": "For so many next writes only" });
  const apply = button("Break it", () => own.step(line()), { className: "main" });
  const heal = button("Heal all", () => own.step("heal"));
  const chip = (key) => el("li", { className: "chip error" }, el("span"),
    button("heal", () => own.step(`heal ${key}`), { "aria-label": `Heal ${key}` }));
  const active = chips("Active faults", chip);
  const own = cardGroup(desk, root, active.list, grid, list, el("div", { className: "line" },
    parameter, el("label", { className: "line" }, "next writes", times), apply, heal));

  const line = () => {
    const value = takes.get(fault) && parameter.value.trim() ? ` ${word(parameter.value.trim())}` : "";
    const count = times.value.trim() ? ` times ${times.value.trim()}` : "";
    return `fault ${place} ${fault}${value}${count}`;
  };

  const refresh = () => {
    places.mark(place);
    kinds.mark(fault);
    const [example, title] = kTakes[takes.get(fault)] ?? ["", ""];
    parameter.hidden = example === "";
    parameter.placeholder = example;
    parameter.title = title;
    apply.disabled = fault === "";
    setText(apply, fault === "" ? "Break it" : `Break it: ${nameOf(place)} ${fault}`);
  };

  const deviceRow = (device, attributes) => el("div", { className: "place" },
    el("span", { textContent: device, className: "device" }),
    ...[kAll, ...attributes].map((attribute) => {
      const key = `${device} ${attribute}`;
      return places.add(key, shorter(attribute), { title: nameOf(key), "aria-label": nameOf(key) });
    }));

  return {
    hello({ words }) {
      places.clear();
      kinds.clear();
      active.clear();
      takes = new Map(words.faults.map((each) => [each.name, each.takes]));
      grid.replaceChildren(deviceRow(kAll, []),
        ...words.devices.map(({ name, attributes }) => deviceRow(name, attributes)));
      list.replaceChildren(...words.faults.map(({ name }) => kinds.add(name, name)));
      refresh();
    },
    state(state) {
      const broken = new Map(state.faults.map((each) => [
        `${each.device || kAll} ${each.attribute || kAll}`, `${each.fault} ${each.detail}`.trim()]));
      for (const key of places.keys()) {
        const each = places.get(key);
        const wrong = broken.get(key);
        each.classList.toggle("broken", wrong !== undefined);
        const name = shorter(key.split(" ")[1]);
        setText(each, wrong ? `${name}: ${wrong}` : name);
        each.setAttribute("aria-label", wrong ? `${nameOf(key)}, broken: ${wrong}` : nameOf(key));
      }
      active.show([...broken.keys()]);
      for (const [key, wrong] of broken) setText(active.get(key).firstChild, `${nameOf(key)}: ${wrong}`);
      setText(heal, broken.size ? `Heal all (${broken.size})` : "Heal all");
      heal.disabled = broken.size === 0;
    },
  };
}
