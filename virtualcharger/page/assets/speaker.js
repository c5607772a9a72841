// The beeper: its tone with the real pitch and length, once somebody has asked for sound, and a
// trace of the last beeps.

import { clock, durationText, showAge } from "./clock.js";
import { byId, el, setText } from "./dom.js";

const kShown = 3;
// Begin and end of a tone come with unlike delay; played this much later, its length is right.
const kDelay = 0.08;
const kLoudest = 0.12;
const kMostVolume = 4;
const kLongestBar = 1000;

const beepCount = (count) => (count === 1 ? "1 beep" : `${count} beeps`);

export function speaker(root) {
  const mute = byId("sound");
  const now = el("p", { className: "figure", textContent: "silent" });
  const volume = el("p", { className: "muted" });
  const trace = el("ol", { className: "beeps", "aria-label": "Last beeps" });
  root.append(now, volume, trace);

  let on = localStorage.getItem("sound") === "on";
  let audio = null;
  let gain = null;
  let loudness = 1;
  let tone = null;   // the sounding oscillator
  let begun = null;  // {t, hz} of the beep under way

  const showMute = () => {
    setText(mute, !on ? "Sound: off" : audio ? "Sound: on" : "Sound: click to hear");
    mute.classList.toggle("on", on);
    mute.title = !on ? "Hear the beeper" : audio ? "Mute the beeper" : "Browsers start muted";
  };

  // Browsers give sound only after a click or a key.
  const wake = () => {
    if (!on || !navigator.userActivation.hasBeenActive) return;
    if (!audio) {
      audio = new AudioContext();
      gain = audio.createGain();
      gain.connect(audio.destination);
      gain.gain.value = kLoudest * loudness;
      showMute();
    }
    audio.resume();
  };

  const sound = (t, hz) => {
    const when = audio ? audio.currentTime + Math.max(0, kDelay + (t - clock.now()) / 1000) : 0;
    tone?.stop(when);
    tone = null;
    if (!on || !audio || audio.state !== "running" || hz === 0) return;
    tone = new OscillatorNode(audio, { type: "square", frequency: hz });
    tone.connect(gain);
    tone.start(when);
  };

  const addToTrace = (hz, from, to) => {
    const bar = el("span", { className: "bar", "aria-hidden": "true" });
    bar.style.inlineSize = `${Math.min(to - from, kLongestBar) / kLongestBar * 100}%`;
    const age = el("span", { className: "muted" });
    showAge(age, to);
    trace.prepend(el("li", {}, bar, el("span", {
      textContent: `${hz} Hz, ${to - from < 1000 ? `${Math.round(to - from)} ms` : durationText(to - from)}` }), age));
    while (trace.children.length > kShown) trace.lastChild.remove();
  };

  const hear = (t, hz) => {
    if (begun) addToTrace(begun.hz, begun.t, t);
    begun = hz > 0 ? { t, hz } : null;
    setText(now, hz > 0 ? `${hz} Hz` : "silent");
    root.classList.toggle("sounding", hz > 0);
  };

  mute.addEventListener("click", () => {
    on = !on || !audio;
    localStorage.setItem("sound", on ? "on" : "off");
    if (!on) tone?.stop();
    wake();
    showMute();
  });
  // The button wakes by its click, which is still to come then.
  const wakeElsewhere = ({ target }) => target !== mute && wake();
  for (const event of ["pointerup", "keyup"]) addEventListener(event, wakeElsewhere);
  showMute();

  return {
    hello(hello) {
      trace.replaceChildren();
      begun = null;
      for (const row of hello.timeline) if (row.lane === "tone") hear(row.t, row.value);
    },
    tone({ t, hz }) {
      hear(t, hz);
      sound(t, hz);
    },
    state(state) {
      const level = Number.parseInt(state.volume, 10);
      loudness = Number.isFinite(level) ? Math.min(level, kMostVolume) / kMostVolume : 0;
      if (gain) gain.gain.value = kLoudest * loudness;
      setText(volume, `volume ${state.volume || "not set"} of ${kMostVolume}, ${beepCount(state.tone.beeps)}`);
    },
  };
}
