// A charger that only writes down what steps do with it.
#pragma once

#include <fmt/format.h>

#include <string>

#include "virtualcharger/scenario/charger.h"

using namespace std::chrono_literals;

class RecordingCharger : private IBench, private IObserver {
 public:
  std::string mDone;

  std::string Do(const StepAction& step) {
    if (const auto* look = std::get_if<Observation>(&step)) return (*look)(*this);
    return std::get<Change>(step)(*this)().value();
  }

 private:
  Deed Request(ERequest request, bool accepted) override {
    return Begin("{} {}", request == ERequest::Enable ? "enable" : "disable", accepted);
  }
  Deed Trigger(int event, bool accepted) override { return Begin("event {} {}", event, accepted); }
  Deed SetLight(double lux) override { return Begin("light {}", lux); }
  Deed SetStored(const std::string& key, const Json::Value& value) override {
    return Begin("set {} {} {}", key, static_cast<int>(value.type()), value.asString());
  }
  Deed SetMeter(bool accepts) override { return Begin("meter {}", accepts); }
  Deed SetLogLevel(Log::ELogLevel level) override {
    return Begin("log {}", static_cast<int>(level));
  }
  void ExpectState(int state, Limit within) override { Note("state {} {}", state, Text(within)); }
  void ExpectAlive() override { Note("alive"); }
  void ExpectBrightness(int percent, Limit within) override {
    Note("brightness {} {}", percent, Text(within));
  }
  void ExpectDisplay(int percent, Limit within) override {
    Note("display {} {}", percent, Text(within));
  }
  void ExpectAttribute(const std::string& device, const std::string& attribute,
                       const std::string& text) override {
    Note("attribute {} {} {}", device, attribute, text);
  }
  void ExpectReport(int state) override { Note("report {}", state); }
  void ExpectNoReport() override { Note("no report"); }
  void ExpectLog(std::optional<Log::ELogLevel> level, const std::string& text,
                 Limit within) override {
    Note("log {} {} {}", level ? static_cast<int>(*level) : -1, text, Text(within));
  }
  void ExpectNoLog(Log::ELogLevel level, const std::string& text) override {
    Note("no log {} [{}]", static_cast<int>(level), text);
  }
  std::string ExpectBeep(const SBeepBounds& bounds) override {
    const auto length = bounds.length.value_or(std::pair(-1ms, -1ms));
    return Note("beep {} {} {}", bounds.hz.value_or(-1), length.first.count(),
                length.second.count());
  }
  void ExpectNoBeep() override { Note("no beep"); }
  Deed SetConnector(int state) override { return Begin("connector {}", state); }
  Deed SetError(int identifier, bool on) override { return Begin("error {} {}", identifier, on); }
  void ExpectLamp(const SLamp& lamp, Limit within) override {
    Note("lamp {} {}", LampWords(lamp), Text(within));
  }
  void ExpectSignal(int identifier, const std::string& text, Limit within) override {
    Note("signal {} {} {}", identifier, text, Text(within));
  }
  void ExpectWrite(const std::string& channel, const std::string& attribute,
                   const std::string& text) override {
    Note("written {} {} {}", channel, attribute, text);
  }
  void ExpectNoWrite() override { Note("nothing"); }
  void Mark() override { Note("mark"); }
  Deed Control(EProcessAction action, const std::string& process) override {
    return Begin("control {} {}", static_cast<int>(action), process);
  }
  Deed SetFault(const std::string& device, const std::string& attribute,
                const SFault& fault) override {
    return Begin("fault [{}] [{}] kind {} error {} delay {} writes {} {}", device, attribute,
                 static_cast<int>(fault.kind), fault.error, fault.delay.count(), fault.writes,
                 fault.text);
  }
  Deed Heal(const std::string& device, const std::string& attribute) override {
    return Begin("heal [{}] [{}]", device, attribute);
  }
  Deed HealAll() override { return Begin("heal"); }
  void Wait(std::chrono::milliseconds time) override { Note("wait {}", time.count()); }

  template <typename... Arguments>
  std::string Note(fmt::format_string<Arguments...> format, Arguments&&... arguments) {
    mDone = fmt::format(format, std::forward<Arguments>(arguments)...);
    return "noted";
  }

  template <typename... Arguments>
  Deed Begin(fmt::format_string<Arguments...> format, Arguments&&... arguments) {
    return Done(Note(format, std::forward<Arguments>(arguments)...));
  }

  static std::string Text(const Limit& limit) {
    return limit ? std::to_string(limit->count()) : "-";
  }
};
