// What must not be missed, above everything else: a process that is gone or stands still, a lost
// connection, no hardware, no right to steer. Static texts: a screen reader says each once.

import { button, byId, el, words } from "./dom.js";
import { clock } from "./clock.js";

const kAbout = {
  dead: [(name) => `The ${name} died`, "start", "bad"],
  frozen: [(name) => `The ${name} is frozen`, "thaw", "bad"],
  stopped: [(name) => `The ${name} is stopped`, "start", "warn"],
};

// A start that takes longer has a reason.
const kPatience = 4000;

const kLinks = {
  lost: "The connection to the charger is lost. Whatever is shown below is what was known last; trying again by itself.",
  silent: "The charger has been silent for some seconds. Whatever is shown below may be old.",
};

const kNoToken = "This page may look, but not steer: open the full address that was printed where virtual-charger was started (it ends in #…).";

// Alerts by key, so that one that stays is not announced again.
class Board {
  #root;
  #shown = new Map();

  constructor(root) {
    this.#root = root;
  }

  show(alerts) {
    for (const [key, { element, text }] of this.#shown) {
      if (alerts.get(key)?.text === text) continue;
      element.remove();
      this.#shown.delete(key);
    }
    for (const [key, { text, kind, actions }] of alerts) {
      if (this.#shown.has(key)) continue;
      const element = el("div", { className: `alert ${kind}` }, el("span", { textContent: text }), ...actions);
      this.#root.append(element);
      this.#shown.set(key, { element, text });
    }
  }
}

export function alerts(desk) {
  const board = new Board(byId("alerts"));
  const alertsNow = new Map();
  let link = { status: "connecting" };
  let greeting = null;
  let state = null;

  let later = null;

  const set = (key, text, kind, ...actions) => alertsNow.set(key, { text, kind, actions });

  const processAlert = ({ name, status, since, detail }) => {
    if (!kAbout[status]) return;
    const [say, action, kind] = kAbout[status];
    const text = `${say(words(name))}${detail ? `: ${detail}` : ""}, at ${clock.text(since)}.`;
    const act = button(words(action), async () => {
      const { ok, text: reason } = await desk.step(`${action} ${name}`);
      if (!ok) act.after(`✗ ${reason}`);
    }, { className: "steer", "aria-label": `${action} ${words(name)}` });
    set(name, text, name === "daemon" ? kind.replace("warn", "bad") : kind, act);
  };

  const startAlert = ({ name, status, since, log }) => {
    if (status !== "starting") return;
    const left = since + kPatience - clock.now();
    if (left > 0) {
      later = setTimeout(refresh, left + 1);
      return;
    }
    const why = name === "daemon" ? "its log below says why" : `its log ${log} says why`;
    set(name, `The ${words(name)} has been starting since ${clock.text(since)}; ${why}.`, "bad");
  };

  const refresh = () => {
    clearTimeout(later);
    alertsNow.clear();
    if (kLinks[link.status]) set("link", kLinks[link.status], "bad", button("Try now", desk.retryNow));
    if (state && link.status !== "lost") {
      if (state.trouble) set("trouble", `${state.trouble[0].toUpperCase()}${state.trouble.slice(1)}.`, "bad");
      state.processes.forEach(processAlert);
      state.processes.forEach(startAlert);
      if (state.storeError) set("store", state.storeError, "warn");
      if (state.play.failed) set("play", `Scenario ${state.play.scenario}, line ${state.play.line}: ${state.play.failed}`, "warn");
    }
    if (greeting && !greeting.hardware) set("hardware", `No virtual hardware: the lamp is shown as the daemon reports it. ${greeting.remedy}`, "warn");
    if (greeting && !greeting.token) set("token", kNoToken, "warn");
    board.show(alertsNow);

    const steers = greeting?.token === true && link.status === "open";
    document.querySelectorAll(".steer").forEach((each) => (each.disabled = !steers));
    document.body.classList.toggle("stale", link.status === "lost" || link.status === "silent");
  };

  return {
    link: (now) => ((link = now), refresh()),
    hello: (message) => ((greeting = message), refresh()),
    state: (message) => ((state = message), refresh()),
  };
}
