// What the steps of a scenario do with the charger.
#pragma once

#include <json/json.h>

#include <chrono>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "platform/log/log.h"
#include "virtualcharger/hardware/faults.h"
#include "virtualcharger/hardware/lamp.h"

// A step did not come out as it should: what was expected, and what was seen last and when.
class CStepFailure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

enum class EProcessAction { Kill, Stop, Start, Freeze, Thaw };

// What the board controller asks of the daemon.
enum class ERequest { Disable, Enable };

// What a beep must be like; any will do where nothing is said.
struct SBeepBounds {
  std::optional<int> hz;
  std::optional<std::pair<std::chrono::milliseconds, std::chrono::milliseconds>> length;
};

// Every operation throws CStepFailure.
class ICharger {
 public:
  // Counted from when the last step that changes something began, so that a promise of speed can be
  // held against the daemon. Without one: a time from now that only a fault reaches.
  using Limit = std::optional<std::chrono::milliseconds>;

  virtual ~ICharger() = default;

  // Returns when the verdict is the expected one and, where it was accepted, the daemon has
  // reported the state that it led to.
  virtual void Request(ERequest request, bool accepted) = 0;
  // Returns when the verdict is the expected one. Any number is a feedback event.
  virtual void Trigger(int event, bool accepted) = 0;

  // Both return when all subscribers have replied; the text tells where that was not so.
  virtual std::string SetConnector(int state) = 0;
  virtual std::string SetError(int identifier, bool on) = 0;

  virtual void SetLight(double lux) = 0;
  // Null takes the key out of the store.
  virtual void SetStored(const std::string& key, const Json::Value& value) = 0;
  virtual void SetMeter(bool accepts) = 0;
  // What the daemon logs from now on: this level and what is more serious.
  virtual void SetLogLevel(Log::ELogLevel level) = 0;

  virtual void ExpectState(int state, Limit within) = 0;
  // One more message from now on.
  virtual void ExpectAlive() = 0;
  virtual void ExpectLamp(const SLamp& lamp, Limit within) = 0;
  // Both in percent.
  virtual void ExpectBrightness(int percent, Limit within) = 0;
  virtual void ExpectDisplay(int percent, Limit within) = 0;
  virtual void ExpectSignal(int identifier, const std::string& text, Limit within) = 0;
  virtual void ExpectAttribute(const std::string& device, const std::string& attribute,
                               const std::string& text) = 0;

  // The next beep behind the mark; the mark moves behind it. Returns how it sounded.
  virtual std::string ExpectBeep(const SBeepBounds& bounds) = 0;
  // That there is none.
  virtual void ExpectNoBeep() = 0;
  // The same for the next state that the daemon reports.
  virtual void ExpectReport(int state) = 0;
  virtual void ExpectNoReport() = 0;
  // A line of the daemon's log behind the mark that contains the text, at this level where one is
  // given; it is not looked at again.
  virtual void ExpectLog(std::optional<Log::ELogLevel> level, const std::string& text,
                         Limit within) = 0;
  // No other one that contains the text, at this level or a more serious one.
  virtual void ExpectNoLog(Log::ELogLevel level, const std::string& text) = 0;
  // As for beeps, for the next write to the lamp.
  virtual void ExpectWrite(const std::string& channel, const std::string& attribute,
                           const std::string& text) = 0;
  virtual void ExpectNoWrite() = 0;
  virtual void Mark() = 0;

  // Process names as in ProcessNames().
  virtual void Control(EProcessAction action, const std::string& process) = 0;

  // Device names as in Devices(). An empty device or attribute stands for all.
  virtual void SetFault(const std::string& device, const std::string& attribute,
                        const SFault& fault) = 0;
  virtual void Heal() = 0;

  virtual void Wait(std::chrono::milliseconds time) = 0;
};
