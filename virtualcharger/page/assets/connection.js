// The WebSocket to the charger: says hello, hands on what comes, asks and is answered, and comes
// back by itself when it was lost.

import { clock } from "./clock.js";

const kFirstPause = 500;
const kLongestPause = 5000;
// The lamp's light is told every 2 s.
const kSilence = 7000;

const kTokenKey = "token";
// Any other fragment is a place on the page.
const kToken = /^#[0-9a-f]{32}$/;

// The token stands in the address's fragment, which never leaves the browser. It is kept for
// reloads and taken out of the address, which people show around.
export function takeToken() {
  if (kToken.test(location.hash)) {
    sessionStorage.setItem(kTokenKey, location.hash.slice(1));
    history.replaceState(null, "", location.pathname);
  }
  return sessionStorage.getItem(kTokenKey) ?? "";
}

// token gives what it takes to steer, or "". onMessage gets every message of the charger, onLink
// {status, retryAt} where status is "connecting", "open", "silent" or "lost".
export function connect({ token, onMessage, onLink }) {
  let socket = null;
  let pause = kFirstPause;
  let retry = null;
  let silence = null;
  let lastId = 0;
  let status = "connecting";
  const waiting = new Map();

  const tell = (next, retryAt = 0) => {
    status = next;
    onLink({ status, retryAt });
  };

  const listen = () => {
    clearTimeout(silence);
    silence = setTimeout(() => tell("silent"), kSilence);
    if (status !== "open") tell("open");
  };

  const receive = (event) => {
    const message = JSON.parse(event.data);
    if (message.type === "hello") {
      clock.restart(message);
      pause = kFirstPause;
    }
    clock.hear(message.now);
    listen();
    if (message.type === "done") {
      waiting.get(message.id)?.(message);
      waiting.delete(message.id);
    } else {
      onMessage(message);
    }
  };

  const lose = () => {
    clearTimeout(silence);
    for (const answer of waiting.values()) answer({ ok: false, text: "the connection was lost" });
    waiting.clear();
    tell("lost", Date.now() + pause);
    retry = setTimeout(open, pause);
    pause = Math.min(pause * 2, kLongestPause);
  };

  function open() {
    clearTimeout(retry);
    const current = new WebSocket(`ws://${location.host}/ws`);
    socket = current;
    const ifCurrent = (handle) => (event) => current === socket && handle(event);
    current.onopen = ifCurrent(() =>
      current.send(JSON.stringify({ type: "hello", token: token() })));
    current.onmessage = ifCurrent(receive);
    current.onclose = ifCurrent(lose);
  }

  const reopen = () => {
    socket.onclose = null;
    socket.close();
    open();
  };

  // The full address put into a page that is open already changes only the fragment.
  addEventListener("hashchange", () => kToken.test(location.hash) && reopen());
  open();

  return {
    retryNow: () => status !== "open" && reopen(),
    // Resolves to {ok, text}.
    ask(message) {
      if (socket.readyState !== WebSocket.OPEN) {
        return Promise.resolve({ ok: false, text: "not connected to the charger" });
      }
      const id = ++lastId;
      socket.send(JSON.stringify({ ...message, id }));
      return new Promise((resolve) => waiting.set(id, resolve));
    },
    step(line) {
      return this.ask({ type: "step", line });
    },
  };
}
