// The page's head and title, and the one polite announcement of what has changed.

import { byId, setText, words } from "./dom.js";

const kLinkTexts = { connecting: "connecting", open: "live", silent: "silent", lost: "connection lost" };
// Many things change together; they are said together.
const kPause = 1000;

const lampText = ({ colour, mode }) => `lamp ${colour} ${mode}`.replace("  ", " ").toLowerCase();

export function status() {
  const name = byId("name");
  const pill = byId("link");
  const live = byId("status");
  let greeting = null;
  let timer = null;
  let text = "";

  const announce = () => {
    timer = null;
    setText(live, text);
  };

  return {
    link(now) {
      setText(pill, kLinkTexts[now.status]);
      pill.dataset.status = now.status;
      if (now.status === "lost") document.title = `✗ ${greeting?.name ?? "Virtual charger"}, not connected`;
    },
    hello(hello) {
      greeting = hello;
      setText(name, hello.name);
    },
    state({ lamp, lifecycle, connector, processes, errors }) {
      const gone = processes.filter((each) => each.status !== "running");
      const trouble = gone.map((each) => `${words(each.name)} ${each.status}`);
      document.title = `${gone.length ? "✗" : "●"} ${greeting.name}: ${trouble[0] ?? lampText(lamp)}`;
      text = [lampText(lamp), `daemon ${words(lifecycle.state)}`, `connector ${words(connector.state)}`,
        errors.length ? `active errors ${errors.join(", ")}` : "no errors", ...trouble].join("; ");
      timer ??= setTimeout(announce, kPause);
    },
  };
}
