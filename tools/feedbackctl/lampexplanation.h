// Why the lamp shows what it shows, as far as that can be seen from outside the daemon.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/ipc/genericcontrol.pb.h"

// What the services say; empty where the one that knows does not answer or has not been told.
struct SLampFacts {
  struct SError {
    std::int32_t identifier;
    std::string name;
  };

  std::optional<std::string> reported;         // the signal "LED state"
  std::chrono::milliseconds reportedAge{0};    // since it was reported
  std::optional<ipc::EState> state;            // of the daemon
  std::optional<std::vector<SError>> errors;   // those that are on, the oldest first
  std::optional<std::int32_t> connectorState;  // its number
  bool installationComplete = true;            // the setting
};

struct SLampExplanation {
  struct SSource {
    std::string name;
    std::optional<std::string> wants;  // as "LED state" says it; empty: leaves it to the next
    std::string why;
  };

  std::vector<SSource> sources;  // event, error, disabled, connector: the first that wants wins
  std::string winner;            // its name; empty when the lamp keeps what it showed
  std::optional<bool> fits;      // whether the report is what the winner wants; empty: unknown
  std::vector<std::string> notes;
};

SLampExplanation ExplainLamp(const SLampFacts& facts);
