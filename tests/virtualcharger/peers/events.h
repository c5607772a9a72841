// What a peer tells, for the tests that look at one of its sides.
#pragma once

#include <string>

#include "tests/platform/rpc/hosts.h"
#include "virtualcharger/peers/peer.h"

inline bool IsMessage(const std::string& event) {
  return event.starts_with("message ");
}

// All but what crosses the wire.
inline PeerEvents Into(Arrivals<std::string>& events) {
  return [&events](const std::string& event) {
    if (!IsMessage(event)) events.Add(event);
  };
}
