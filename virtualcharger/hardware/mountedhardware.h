// The virtual hardware in its place: served by this process and bound over the machine's own paths.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "virtualcharger/hardware/fuseserver.h"
#include "virtualcharger/hardware/privatenamespace.h"

// Where the daemon looks for its LEDs.
inline const SBinding kLedsBinding{"leds", "/sys/class/leds"};
// Where it looks for its light sensor and its beeper, and where it asks for a tone.
inline const SBinding kLinksBinding{"sysfs-links", "/var/sysfs-links"};
inline const SBinding kToneBinding{"tone", "/dev/tty0", false};

class CMountedHardware {
 public:
  explicit CMountedHardware(CFuseServer::Trees trees);

  // Once, inside the private namespace. Returns the error's text. Everything is taken away again on
  // destruction, also after a failure.
  [[nodiscard]] std::optional<std::string> Start(const std::vector<SBinding>& bindings);

 private:
  CFuseServer mServer;
  CBindings mBindings;
};
