// What the lamp shows in words, how bright it is, and whether the daemon says the same.

import { el, setText } from "./dom.js";
import { showAge } from "./clock.js";

// "Blue/Pulsating"; a dark lamp has no colour.
const shownAs = ({ colour, mode }) => (colour ? `${colour}/${mode}` : mode);

// The daemon reports a dark lamp with whatever colour it had last.
function agrees({ colour, mode, reported }) {
  if (reported === "") return true;
  return mode === "Off" ? /(^|\/)off$/i.test(reported)
                        : reported.toLowerCase() === `${colour}/${mode}`.toLowerCase();
}

export const lampText = ({ colour, mode }) =>
  mode === "Off" ? "Off" : colour ? `${colour} ${mode.toLowerCase()}` : mode;

export function lampNumbers(root) {
  const shown = el("strong", { className: "headline" });
  const percent = el("span", { className: "figure" });
  const age = el("span", { className: "muted" });
  const reported = el("p", { className: "reported" });
  root.append(el("div", { className: "numbers" },
    el("div", { className: "headlines" }, shown, percent),
    el("div", { className: "headlines" }, reported, age)));

  return {
    state({ lamp }) {
      setText(shown, lampText(lamp));
      setText(percent, lamp.percent.replace("%", " %"));
      showAge(age, lamp.since);
      const same = agrees(lamp);
      reported.className = same ? "reported" : "reported differs";
      setText(reported, lamp.reported === "" ? "nothing reported yet"
        : same ? `✓ reported ${lamp.reported}`
        : `≠ reported ${lamp.reported}, but shows ${shownAs(lamp)}`);
    },
  };
}
