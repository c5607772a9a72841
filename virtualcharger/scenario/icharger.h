// What the steps of a scenario do with the charger.
#pragma once

#include <chrono>
#include <optional>
#include <stdexcept>
#include <string>

#include "virtualcharger/hardware/faults.h"
#include "virtualcharger/hardware/lamp.h"

// A step did not come out as it should: what was expected, and what was seen last and when.
class CStepFailure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

enum class EProcessAction { Kill, Stop, Start, Freeze, Thaw };

// Every operation throws CStepFailure.
class ICharger {
 public:
  // Counted from when the last step that changes something began, so that a promise of speed can be
  // held against the daemon. Without one: a time from now that only a fault reaches.
  using Limit = std::optional<std::chrono::milliseconds>;

  virtual ~ICharger() = default;

  // Both return when all subscribers have replied; the text tells where that was not so.
  virtual std::string SetConnector(int state) = 0;
  virtual std::string SetError(int identifier, bool on) = 0;

  virtual void ExpectLamp(const SLamp& lamp, Limit within) = 0;
  virtual void ExpectSignal(int identifier, const std::string& text, Limit within) = 0;

  // The next write behind the mark; the mark moves behind it.
  virtual void ExpectWrite(const std::string& channel, const std::string& attribute,
                           const std::string& text) = 0;
  // That there is none.
  virtual void ExpectNoWrite() = 0;
  virtual void Mark() = 0;

  // Process names as in ProcessNames().
  virtual void Control(EProcessAction action, const std::string& process) = 0;

  // An empty channel or attribute stands for all.
  virtual void SetFault(const std::string& channel, const std::string& attribute,
                        const SFault& fault) = 0;
  virtual void Heal() = 0;

  virtual void Wait(std::chrono::milliseconds time) = 0;
};
