// Brings what comes from the charger to the parts of a page: a message goes to every part that has a
// function named after the message's type.

import { keepFocus } from "./focus.js";

export function partsOf(parts) {
  // A part that fails must not take the others with it.
  const tell = (type, message) => keepFocus(() => parts.forEach((part) => {
    try {
      part[type]?.(message);
    } catch (error) {
      reportError(error);
    }
  }));

  return {
    onLink: (link) => tell("link", link),
    onMessage(message) {
      tell(message.type, message);
      if (message.type === "hello") {
        // A greeting brings the whole picture.
        tell("state", message.state);
        tell("lamp", message.lamp);
        tell("recording", message.recording);
      }
    },
  };
}
