// The names that scenarios use for numbers and places.
#pragma once

#include <string>
#include <vector>

struct SNames {
  std::vector<std::string> names;
  std::vector<int> numbers;  // of the name at the same place
};

// Connector states as on the wire: "suspended-by-car".
const SNames& ConnectorStates();
// Errors of the signal catalogue: "charge-control-cp-short".
const SNames& Errors();
inline constexpr int kFirstError = 1000;
inline constexpr int kLastError = 9999;

// In the order of the lamp's channels.
const std::vector<std::string>& Channels();
const std::vector<std::string>& Attributes();
const std::vector<std::string>& LampColours();
const std::vector<std::string>& LampModes();
