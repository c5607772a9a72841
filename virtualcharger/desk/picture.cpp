#include "virtualcharger/desk/picture.h"

#include <algorithm>
#include <cmath>

#include "utils/signalcatalogue.h"
#include "virtualcharger/scenario/names.h"
#include "virtualcharger/scenario/steptable.h"

namespace {

// Of the daemon's sensor.
constexpr double kUnitsPerLux = 120;
constexpr int kDarkest = 3000;
constexpr int kBrightest = 80'000;

Json::Value ProcessList(const CProcesses& processes, const CPageClock& clock) {
  Json::Value list(Json::arrayValue);
  for (const auto& name : ProcessNames()) {
    const auto& status = processes.Status(name);
    Json::Value process;
    process["name"] = name;
    process["status"] = StatusName(status);
    process["since"] = clock(status.since);
    process["detail"] = status.detail;
    process["log"] = processes.Root().Log(name == kDaemon ? "feedback" : name);
    list.append(process);
  }
  return list;
}

// "pattern" of "none [pattern]".
std::string Trigger(const CChargerHardware& hardware, const std::string& channel) {
  const auto text = hardware.Attribute(DevicePath(channel), "trigger").value_or("");
  const auto begin = text.find('[') + 1;
  return text.substr(begin, text.find(']') - begin);
}

Json::Value ChannelList(const CBench& bench, const SView& view) {
  Json::Value list(Json::arrayValue);
  for (std::size_t index = 0; index < view.patterns.size(); ++index) {
    const auto light = bench.Hardware().Light().Channels()[index]->Light();
    Json::Value channel;
    channel["name"] = Channels()[index];
    channel["pattern"] = view.patterns[index];
    channel["minimum"] = light.minimum;
    channel["maximum"] = light.maximum;
    channel["trigger"] = Trigger(bench.Hardware(), Channels()[index]);
    list.append(channel);
  }
  return list;
}

Json::Value Lamp(const CBench& bench, const SView& view, const CPageClock& clock) {
  Json::Value lamp;
  lamp["colour"] = view.lamp.colour;
  lamp["mode"] = view.lamp.mode;
  lamp["since"] = clock(bench.Lamp().since);
  lamp["percent"] = view.brightness;
  lamp["reported"] = view.ledState;
  lamp["channels"] = ChannelList(bench, view);
  return lamp;
}

Json::Value Tone(const CBench& bench, const SView& view, const CPageClock& clock) {
  const auto last = bench.Hardware().Tone().Last();
  Json::Value tone;
  tone["hz"] = last ? Hertz(*last) : 0;
  tone["since"] = last ? clock(last->time) : 0;
  tone["beeps"] = view.beeps;
  return tone;
}

Json::Value SignalList(const CProcesses& processes, const CPageClock& clock) {
  Json::Value list(Json::arrayValue);
  for (const auto& [identifier, last] : processes.Signals()) {
    const auto* described = FindSignal(static_cast<ipc::ESignalIdentifier>(identifier));
    Json::Value signal;
    signal["identifier"] = identifier;
    signal["name"] = described == nullptr ? "" : std::string(described->name);
    signal["value"] = last.value;
    signal["since"] = clock(last.time);
    list.append(signal);
  }
  return list;
}

}  // namespace

Json::Value Picture(const CBench& bench, const CPageClock& clock) {
  const auto& processes = bench.Processes();
  const auto& hardware = bench.Hardware();
  const auto view = bench.View();
  const auto& state = processes.LastState();
  const auto& alive = processes.AliveMessages();

  Json::Value picture;
  picture["processes"] = ProcessList(processes, clock);
  picture["lifecycle"]["state"] = view.state;
  picture["lifecycle"]["since"] = state ? clock(state->time) : 0;
  picture["alive"]["count"] = alive.value;
  picture["alive"]["last"] = alive.value == 0 ? 0 : clock(alive.time);
  picture["connector"]["state"] = ConnectorStateName(processes.Connector().value);
  picture["connector"]["since"] = clock(processes.Connector().time);
  picture["lamp"] = Lamp(bench, view, clock);
  picture["tone"] = Tone(bench, view, clock);
  picture["volume"] = hardware.Attribute(DevicePath("beeper"), "volume").value_or("");
  picture["light"]["lux"] = hardware.Sensor().Lux();
  picture["light"]["percent"] = LightPercent(hardware.Sensor().Lux());
  picture["logLevel"] = LogLevelName(bench.LogLevel());
  const auto& display = processes.Display();
  picture["display"]["percent"] = display ? Json::Value(display->value) : Json::Value();
  picture["display"]["accepts"] = processes.MeterAccepts();
  picture["errors"] = Json::Value(Json::arrayValue);
  for (const int error : ActiveErrors(processes)) picture["errors"].append(error);
  picture["signals"] = SignalList(processes, clock);
  picture["faults"] = FaultPictures(hardware.Faults());
  return picture;
}

std::string StatusName(const SProcessStatus& status) {
  if (status.frozen) return "frozen";
  switch (status.state) {
    case EProcessState::Stopped:
      return "stopped";
    case EProcessState::Starting:
      return "starting";
    case EProcessState::Running:
      return "running";
    case EProcessState::Dead:
      break;
  }
  return "dead";
}

std::vector<int> ActiveErrors(const CProcesses& processes) {
  std::vector<int> active;
  for (const auto& [identifier, last] : processes.Signals()) {
    const bool error = identifier >= kFirstError && identifier <= kLastWarning;
    if (error && last.value == "true") active.push_back(identifier);
  }
  return active;
}

double Hertz(const STone& tone) {
  return tone.divisor == 0 ? 0 : std::round(kToneClock / tone.divisor);
}

int LightPercent(double lux) {
  const double units = std::clamp<double>(std::round(lux * kUnitsPerLux), kDarkest, kBrightest);
  return static_cast<int>(100 * (units - kDarkest) / (kBrightest - kDarkest));
}

Json::Value FaultPictures(const CFaults& faults) {
  Json::Value list(Json::arrayValue);
  for (const auto& [device, attribute, fault, writesLeft] : faults.All()) {
    std::string detail;
    if (fault.kind == EFault::Slow) detail = std::to_string(fault.delay.count()) + "ms";
    if (fault.kind == EFault::Garbage) detail = Quoted(fault.text);
    if (fault.writes > 0) detail += " times " + std::to_string(writesLeft);
    Json::Value entry;
    entry["device"] = device.empty() ? "all" : DeviceName(device);
    entry["attribute"] = attribute.empty() ? "all" : attribute;
    entry["fault"] = std::string(FaultName(fault));
    entry["detail"] = detail.starts_with(' ') ? detail.substr(1) : detail;
    list.append(entry);
  }
  return list;
}
