// Joins the page's parts. State flows one way: the charger's messages go to every part that has a
// function of the message's type; a part's controls send steps; what they did comes back as messages.

import { alerts } from "./alerts.js";
import { ambient } from "./ambient.js";
import { byId } from "./dom.js";
import { channels } from "./channels.js";
import { connect, takeToken } from "./connection.js";
import { controls } from "./controls.js";
import { errors } from "./errors.js";
import { faults } from "./faults.js";
import { keys } from "./keys.js";
import { lampNumbers } from "./lampnumbers.js";
import { lampView } from "./lampview.js";
import { log } from "./log.js";
import { messages } from "./messages.js";
import { meter } from "./meter.js";
import { others } from "./others.js";
import { partsOf } from "./parts.js";
import { places } from "./places.js";
import { processes } from "./processes.js";
import { recording } from "./recording.js";
import { scenarios } from "./scenarios.js";
import { settings } from "./settings.js";
import { speaker } from "./speaker.js";
import { startFrames } from "./frames.js";
import { status } from "./status.js";
import { timelinePart } from "./timelinepart.js";

// The parts are built before the connection, which they steer by.
let connection;
const desk = {
  ask: (message) => connection.ask(message),
  step: (line) => connection.step(line),
  retryNow: () => connection.retryNow(),
};

const timeline = timelinePart(byId("timeline"));
const parts = [
  status(),
  others(byId("others")),
  lampView(byId("face")),
  lampNumbers(byId("face")),
  channels(byId("channels")),
  meter(byId("meter"), desk),
  speaker(byId("speaker")),
  controls(byId("daemon"), desk),
  errors(byId("errors"), desk),
  ambient(byId("ambient"), desk),
  processes(byId("processes"), desk),
  scenarios(byId("scenarios"), desk),
  recording(byId("recording"), desk),
  timeline,
  messages(byId("messages")),
  log(byId("log"), desk),
  settings(byId("settings"), desk),
  faults(byId("faults"), desk),
  // Last: it also decides what may be steered.
  alerts(desk),
];
keys(timeline);
places();
startFrames();
connection = connect({ token: takeToken, ...partsOf(parts) });
