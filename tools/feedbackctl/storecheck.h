// What is wrong with a store, and what the daemon takes from it.
#pragma once

#include <json/json.h>

#include <string>
#include <vector>

struct SStoreVerdict {
  std::vector<std::string> problems;  // one line each, with path, section and key
  std::vector<std::string> hints;     // about what the daemon does not read
};

// Throws std::runtime_error for a file that is no store.
SStoreVerdict CheckStore(const std::string& path);

// The RPC layer's own verdict on where the sockets are and who may use them; that layer logs
// nothing any more afterwards. Not while any of its objects exists.
std::vector<std::string> CommunicationProblems(const std::string& path);

// A setting as the daemon takes it: where the store has none that fits, its default.
Json::Value EffectiveSetting(const std::string& path, const std::string& section,
                             const std::string& key);
