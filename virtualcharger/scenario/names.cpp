#include "virtualcharger/scenario/names.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <span>
#include <string_view>

#include "platform/ipc/genericcontrol.pb.h"
#include "platform/ipc/sessionmanager.pb.h"
#include "utils/ledstate.h"
#include "utils/settingscatalogue.h"
#include "utils/signalcatalogue.h"
#include "utils/words.h"
#include "virtualcharger/hardware/chargerhardware.h"
#include "virtualcharger/scenario/words.h"

namespace {

void Add(SNames& names, std::string_view enumerator, std::string_view prefix, int number) {
  names.names.push_back(DashedName(enumerator.substr(prefix.size())));
  names.numbers.push_back(number);
}

SNames MakeConnectorStates() {
  SNames names;
  for (int state = ipc::EConnectorState_MIN; state <= ipc::EConnectorState_MAX; ++state) {
    if (!ipc::EConnectorState_IsValid(state)) continue;
    Add(names, ipc::EConnectorState_Name(static_cast<ipc::EConnectorState>(state)),
        "EConnectorState", state);
  }
  return names;
}

SNames MakeDaemonStates() {
  SNames names;
  for (int state = ipc::EStateUninitialized; state <= ipc::EState_MAX; ++state) {
    Add(names, ipc::EState_Name(static_cast<ipc::EState>(state)), "EState", state);
  }
  return names;
}

SNames MakeErrors() {
  SNames names;
  for (const auto& signal : AllSignals()) {
    if (signal.identifier < kFirstError || signal.identifier > kLastWarning) continue;
    Add(names, SignalName(signal), "", signal.identifier);
  }
  return names;
}

std::vector<std::string> DashedNames(std::span<const std::string_view> texts) {
  std::vector<std::string> names;
  for (const auto text : texts) names.push_back(DashedName(text));
  return names;
}

std::string NameOf(const SNames& all, int number) {
  const auto& [names, numbers] = all;
  const auto found = std::ranges::find(numbers, number);
  return found == numbers.end() ? fmt::format("{}", number)
                                : names[static_cast<std::size_t>(found - numbers.begin())];
}

const std::vector<std::string>& DevicePaths() {
  static const std::vector<std::string> paths{std::string(kStatusLightDevices[0]),
                                              std::string(kStatusLightDevices[1]),
                                              std::string(kStatusLightDevices[2]),
                                              kSensorDevice,
                                              kBeeperDevice,
                                              kToneDevice};
  return paths;
}

// What stands at the same place in the other list; empty for another text.
std::string Counterpart(const std::vector<std::string>& from, const std::vector<std::string>& to,
                        const std::string& text) {
  const auto found = std::ranges::find(from, text);
  return found == from.end() ? std::string() : to[static_cast<std::size_t>(found - from.begin())];
}

}  // namespace

const SNames& ConnectorStates() {
  static const SNames names = MakeConnectorStates();
  return names;
}

const SNames& DaemonStates() {
  static const SNames names = MakeDaemonStates();
  return names;
}

std::string DaemonStateName(int state) {
  return NameOf(DaemonStates(), state);
}

std::string ConnectorStateName(int state) {
  return NameOf(ConnectorStates(), state);
}

const SNames& Errors() {
  static const SNames names = MakeErrors();
  return names;
}

const std::vector<std::string>& Devices() {
  static const std::vector<std::string> names{"red", "green", "blue", "sensor", "beeper", "tone"};
  return names;
}

std::string DevicePath(const std::string& device) {
  return Counterpart(Devices(), DevicePaths(), device);
}

std::string DeviceName(const std::string& path) {
  return Counterpart(DevicePaths(), Devices(), path);
}

const std::vector<std::string>& Channels() {
  static const std::vector<std::string> names(Devices().begin(), Devices().begin() + 3);
  return names;
}

const std::vector<std::string>& AttributesOf(const std::string& device) {
  using Names = std::vector<std::string>;
  static const Names channel{"trigger", "pattern", "brightness", "max_pattern_brightness",
                             "min_pattern_brightness"};
  static const std::map<std::string, Names> others{
      {"sensor", {"in_illuminance_input", "in_illuminance_raw", "in_illuminance_integration_time"}},
      {"beeper", {"volume"}},
      {"tone", {}}};
  static const Names any = [] {
    auto names = channel;
    for (const auto& [name, own] : others) names.insert(names.end(), own.begin(), own.end());
    return names;
  }();
  if (device.empty()) return any;
  const auto found = others.find(device);
  return found == others.end() ? channel : found->second;
}

const std::vector<std::string>& LampColours() {
  static const auto names = DashedNames(kLedColorTexts);
  return names;
}

const std::vector<std::string>& LampModes() {
  static const auto names = [] {
    auto all = DashedNames(kLedModeTexts);
    std::erase(all, "off");  // has no colour
    return all;
  }();
  return names;
}

const std::vector<std::string>& StoreKeys() {
  static const std::vector<std::string> keys = [] {
    std::vector<std::string> all;
    for (const auto& setting : kSettings) all.emplace_back(setting.key);
    return all;
  }();
  return keys;
}

std::string StoreSection(const std::string& key) {
  const auto* const setting = std::ranges::find(kSettings, key, &CSettingDescription::key);
  return std::string(setting == kSettings.end() ? "" : setting->section);
}

Json::Value StoredValue(const std::string& word) {
  if (word == "true" || word == "false") return word == "true";
  const auto number = ParseNumber<int>(word);
  return number ? Json::Value(*number) : Json::Value(word);
}
