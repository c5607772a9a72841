// The life of one peer as a process of its own, steered by lines.
//
// In: "NUMBER COMMAND", one command after the other. Out: "serving" once, the peer's events as
// they come, and for each command "reply NUMBER OUTCOME".
#pragma once

#include <string>

struct SPeerSettings {
  std::string name;        // as for MakePeer
  std::string store;       // path of the configuration store
  int connectorState = 0;  // what the session manager begins with
};

// Serves until the control descriptor ends or SIGTERM comes. Returns the process's exit status.
// Called while the process has one thread.
int RunPeer(const SPeerSettings& settings, int control);
