#include "virtualcharger/desk/vocabulary.h"

#include <sstream>
#include <string>

#include "utils/settingscatalogue.h"
#include "utils/signalcatalogue.h"
#include "virtualcharger/hardware/faults.h"
#include "virtualcharger/scenario/daemonlog.h"
#include "virtualcharger/scenario/names.h"
#include "virtualcharger/scenario/steptable.h"

namespace {

Json::Value List(const std::vector<std::string>& words) {
  Json::Value list(Json::arrayValue);
  for (const auto& word : words) list.append(word);
  return list;
}

Json::Value ConnectorWords() {
  Json::Value list(Json::arrayValue);
  const auto& [names, numbers] = ConnectorStates();
  for (std::size_t index = 0; index < names.size(); ++index) {
    Json::Value state;
    state["name"] = names[index];
    state["number"] = numbers[index];
    list.append(state);
  }
  return list;
}

Json::Value ErrorWords() {
  Json::Value list(Json::arrayValue);
  const auto& [names, numbers] = Errors();
  for (std::size_t index = 0; index < names.size(); ++index) {
    const auto* signal = FindSignal(static_cast<ipc::ESignalIdentifier>(numbers[index]));
    Json::Value error;
    error["identifier"] = numbers[index];
    error["name"] = names[index];
    error["text"] = std::string(signal->name);
    error["kind"] = numbers[index] < kFirstWarning ? "error" : "warning";
    list.append(error);
  }
  return list;
}

Json::Value DeviceWords() {
  Json::Value list(Json::arrayValue);
  for (const auto& name : Devices()) {
    Json::Value device;
    device["name"] = name;
    device["attributes"] = List(AttributesOf(name));
    list.append(device);
  }
  return list;
}

Json::Value FaultWords() {
  Json::Value list(Json::arrayValue);
  for (const auto& name : FaultNames()) {
    Json::Value fault;
    fault["name"] = name;
    fault["takes"] = name == "slow" ? "time" : name == "garbage" ? "text" : "";
    list.append(fault);
  }
  return list;
}

Json::Value SettingWords() {
  Json::Value list(Json::arrayValue);
  for (const auto& setting : kSettings) {
    Json::Value words;
    words["key"] = std::string(setting.key);
    words["section"] = std::string(setting.section);
    std::istringstream(std::string(setting.defaultText)) >> words["default"];
    words["text"] = std::string(setting.meaning);
    words["unit"] = setting.key.starts_with("HmiLedIntensityM") && setting.most == 100 ? "%" : "";
    switch (setting.type) {
      case ESettingType::EBool:
        words["type"] = "bool";
        break;
      case ESettingType::EInteger:
        words["type"] = "int";
        words["minimum"] = setting.least;
        words["maximum"] = setting.most;
        break;
      case ESettingType::EBrightnessMode:
        words["type"] = "string";
        words["choices"] = List({"Fixed", "Auto"});
        break;
    }
    list.append(words);
  }
  return list;
}

Json::Value ScenarioWords(const CLibrary& library) {
  Json::Value list(Json::arrayValue);
  for (const auto& entry : library.Entries()) {
    Json::Value scenario;
    scenario["name"] = entry.name;
    scenario["text"] = entry.text;
    list.append(scenario);
  }
  return list;
}

}  // namespace

Json::Value Vocabulary(const CLibrary& library) {
  Json::Value words;
  words["connectorStates"] = ConnectorWords();
  words["errors"] = ErrorWords();
  words["events"] = List({"card accepted", "card refused", "card swiped", "identify"});
  words["processes"] = List(ProcessNames());
  words["devices"] = DeviceWords();
  words["faults"] = FaultWords();
  words["settings"] = SettingWords();
  words["scenarios"] = ScenarioWords(library);
  words["logLevels"] = List(LogLevels());
  return words;
}
