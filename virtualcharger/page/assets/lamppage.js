// The lamp alone, with few words: for a frame on another charger's page. It sends no token, and has
// nothing that could be steered.

import { byId, setText, words } from "./dom.js";
import { connect } from "./connection.js";
import { lampText } from "./lampnumbers.js";
import { lampView } from "./lampview.js";
import { partsOf } from "./parts.js";
import { startFrames } from "./frames.js";

const kAway = { lost: "not connected", silent: "silent" };
const kTroubles = ["dead", "frozen", "stopped"];

function fewWords() {
  let away = "";
  let troubles = [];

  const showTrouble = () => {
    const text = [away, ...troubles].filter(Boolean).join(", ");
    setText(byId("trouble"), text);
    document.body.classList.toggle("trouble", text !== "");
    document.body.classList.toggle("away", away !== "");
  };

  return {
    link({ status }) {
      away = kAway[status] ?? "";
      if (status === "lost") troubles = [];
      showTrouble();
    },
    hello({ name }) {
      document.title = `The lamp of ${name}`;
    },
    state({ lamp, connector, lifecycle, processes, trouble }) {
      setText(byId("light"), lampText(lamp));
      const about = lifecycle.state === "enabled" ? [connector] : [connector, lifecycle];
      setText(byId("charger"), about.map(({ state }) => words(state)).join(", "));
      troubles = processes.filter(({ status }) => kTroubles.includes(status))
        .map(({ name, status }) => `${words(name)} ${status}`);
      if (trouble) troubles.unshift("files gone");
      showTrouble();
    },
  };
}

const parts = [lampView(byId("lamp")), fewWords()];
startFrames();
connect({ token: () => "", ...partsOf(parts) });
