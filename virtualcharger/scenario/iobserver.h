// What the steps of a scenario wait for and look at.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <utility>

#include "platform/log/log.h"
#include "virtualcharger/hardware/lamp.h"
#include "virtualcharger/scenario/deed.h"

// What a beep must be like; any will do where nothing is said.
struct SBeepBounds {
  std::optional<int> hz;
  std::optional<std::pair<std::chrono::milliseconds, std::chrono::milliseconds>> length;
};

// Every operation returns when what is expected holds, and throws CStepFailure where it does not
// come to that.
class IObserver {
 public:
  // Counted from when the last step that changes something began, so that a promise of speed can be
  // held against the daemon. Without one: a time from now that only a fault reaches.
  using Limit = std::optional<std::chrono::milliseconds>;

  virtual ~IObserver() = default;

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

  virtual void Wait(std::chrono::milliseconds time) = 0;
};
