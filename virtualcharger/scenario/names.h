// The names that scenarios use for numbers and places.
#pragma once

#include <json/json.h>

#include <string>
#include <vector>

#include "utils/signalcatalogue.h"

struct SNames {
  std::vector<std::string> names;
  std::vector<int> numbers;  // of the name at the same place
};

// Connector states as on the wire: "suspended-by-car". The name of one number, or the number as
// text.
const SNames& ConnectorStates();
std::string ConnectorStateName(int state);
// States of the daemon's life, the same way: "fatal-error".
const SNames& DaemonStates();
std::string DaemonStateName(int state);
// Errors and warnings of the signal catalogue: "charge-control-cp-short".
const SNames& Errors();

// The lamp's channels in their order, then the other hardware.
const std::vector<std::string>& Devices();
// Where it is, as the hardware names it, and back. Empty for an empty text.
std::string DevicePath(const std::string& device);
std::string DeviceName(const std::string& path);
const std::vector<std::string>& Channels();
// Those that the device has, any of them for an empty name.
const std::vector<std::string>& AttributesOf(const std::string& device);
const std::vector<std::string>& LampColours();
const std::vector<std::string>& LampModes();

// What the daemon reads in the store, and the section that a key is in.
const std::vector<std::string>& StoreKeys();
std::string StoreSection(const std::string& key);
// What a word means in the store: true, false, a whole number or a text.
Json::Value StoredValue(const std::string& word);
