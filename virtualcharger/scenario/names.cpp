#include "virtualcharger/scenario/names.h"

#include <string_view>

#include "platform/ipc/sessionmanager.pb.h"
#include "utils/signalcatalogue.h"
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

SNames MakeErrors() {
  SNames names;
  for (const auto& signal : AllSignals()) {
    if (signal.identifier < kFirstError || signal.identifier > kLastError) continue;
    Add(names, ipc::ESignalIdentifier_Name(signal.identifier), "ESignalIdentifier",
        signal.identifier);
  }
  return names;
}

}  // namespace

const SNames& ConnectorStates() {
  static const SNames names = MakeConnectorStates();
  return names;
}

const SNames& Errors() {
  static const SNames names = MakeErrors();
  return names;
}

const std::vector<std::string>& Channels() {
  static const std::vector<std::string> names{"red", "green", "blue"};
  return names;
}

const std::vector<std::string>& Attributes() {
  static const std::vector<std::string> names{"trigger", "pattern", "brightness",
                                              "max_pattern_brightness", "min_pattern_brightness"};
  return names;
}

const std::vector<std::string>& LampColours() {
  static const std::vector<std::string> names{"red", "green", "blue", "yellow", "white"};
  return names;
}

const std::vector<std::string>& LampModes() {
  static const std::vector<std::string> names{"on",     "pulsating", "flashing", "blink1", "blink2",
                                              "blink3", "blink4",    "blink5",   "blink6", "blink7",
                                              "blink8", "blink9",    "blink10"};
  return names;
}
