// What somebody does here, written down as a scenario.

import { button, el, setText } from "./dom.js";
import { cardGroup } from "./group.js";

const kFull = "Full, and ended by itself: what you do now is not written down. Download it and record anew.";

function download(text) {
  const link = el("a", { href: URL.createObjectURL(new Blob([text], { type: "text/plain" })),
    download: "recorded.scenario" });
  link.click();
  URL.revokeObjectURL(link.href);
}

export function recording(root, desk) {
  let on = false;
  const toggle = button("Record", () => own.ask({ type: "record", on: !on }, on ? "stop" : "record"),
    { id: "record" });
  const text = el("pre", { className: "recorded", tabIndex: 0, role: "region", "aria-label": "Recorded scenario" });
  const copy = button("Copy", async () => {
    await navigator.clipboard.writeText(written);
    setText(copy, "Copied");
    setTimeout(() => setText(copy, "Copy"), 2000);
  });
  const save = button("Download", () => download(written));
  const full = el("p", { className: "problem", role: "status" });
  const own = cardGroup(desk, root, el("div", { className: "line" }, toggle, copy, save, full));
  // Readable without the right to steer.
  root.append(text);
  let written = null;
  const write = (recorded) => {
    if (written === recorded) return;
    text.textContent = written = recorded;
    text.hidden = recorded === "";
    copy.disabled = save.disabled = recorded === "";
    if (on) text.scrollTop = text.scrollHeight;
  };
  return {
    state({ recording: now }) {
      on = now.on;
      toggle.classList.toggle("on", on);
      setText(toggle, on ? "● Recording, stop" : "Record");
      setText(full, now.full ? kFull : "");
    },
    recording: (message) => write(message.text),
  };
}
