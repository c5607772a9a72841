// How what is watched is shown: as lines, as JSON, or live on a terminal.
#pragma once

#include <json/json.h>

#include <cstdint>
#include <map>
#include <memory>
#include <ostream>
#include <string>

#include "tools/feedbackctl/commandline.h"

struct SChange {
  std::string time;  // UTC, "2024-01-31T12:00:00.042Z"
  std::string kind;  // daemon, state, lamp, buzzer, light or alive
  Json::Value value;
};

// Everything that is known now.
struct SWatched {
  std::map<std::string, Json::Value> values;  // by kind
  std::uint64_t alive = 0;                    // messages
  SChange last;                               // the last change that was none of light or alive
};

// Threads: one at a time.
class IWatchView {
 public:
  virtual ~IWatchView() = default;
  virtual void Show(const SChange& change, const SWatched& now) = 0;
};

// What the invocation and the output ask for.
std::unique_ptr<IWatchView> MakeWatchView(const CInvocation& invocation, const CTool& tool);
