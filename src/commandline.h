// The daemon's command line.
#pragma once

#include <optional>
#include <string>

struct CommandLine {
  // Prepended to "etc/ovra.json" as it stands: it is expected to end with a slash.
  std::string root = "/";
};

// Reads the options one at a time, in the order given; -v and -q take effect at once. Empty when
// the process is to stop: the usage has been printed then.
std::optional<CommandLine> ParseCommandLine(int argumentCount, char* arguments[]);
