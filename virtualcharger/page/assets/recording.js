// What somebody does here, written down as a scenario.

import { button, el, setText } from "./dom.js";
import { cardGroup } from "./group.js";

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
    await navigator.clipboard.writeText(text.textContent);
    setText(copy, "Copied");
    setTimeout(() => setText(copy, "Copy"), 2000);
  });
  const save = button("Download", () => download(text.textContent));
  const own = cardGroup(desk, root, el("div", { className: "buttons" }, toggle, copy, save));
  // Readable without the right to steer.
  root.append(text);
  return {
    state({ recording: now }) {
      on = now.on;
      toggle.classList.toggle("on", on);
      setText(toggle, on ? "● Recording, stop" : "Record");
      setText(text, now.text);
      text.hidden = now.text === "";
      copy.disabled = save.disabled = now.text === "";
      if (on) text.scrollTop = text.scrollHeight;
    },
  };
}
