// What the steps of a scenario change at the charger and around it.
#pragma once

#include <json/json.h>

#include <string>

#include "platform/log/log.h"
#include "virtualcharger/hardware/faults.h"
#include "virtualcharger/scenario/deed.h"

enum class EProcessAction { Kill, Stop, Start, Freeze, Thaw };

// What the board controller asks of the daemon.
enum class ERequest { Disable, Enable };

// Every operation begins the change; its deed ends when that has come into force. Throws
// CStepFailure where it cannot begin.
class IBench {
 public:
  virtual ~IBench() = default;

  // Ends when the verdict is the expected one and, where it was accepted, the daemon has reported
  // the state that it led to.
  virtual Deed Request(ERequest request, bool accepted) = 0;
  // Ends when the verdict is the expected one. Any number is a feedback event.
  virtual Deed Trigger(int event, bool accepted) = 0;

  // Both end when all subscribers have replied; the note tells where that was not so.
  virtual Deed SetConnector(int state) = 0;
  virtual Deed SetError(int identifier, bool on) = 0;

  virtual Deed SetLight(double lux) = 0;
  // Null takes the key out of the store.
  virtual Deed SetStored(const std::string& key, const Json::Value& value) = 0;
  virtual Deed SetMeter(bool accepts) = 0;
  // What the daemon logs from now on: this level and what is more serious.
  virtual Deed SetLogLevel(Log::ELogLevel level) = 0;

  // Process names as in ProcessNames().
  virtual Deed Control(EProcessAction action, const std::string& process) = 0;

  // Device names as in Devices(). An empty device or attribute stands for all.
  virtual Deed SetFault(const std::string& device, const std::string& attribute,
                        const SFault& fault) = 0;
  // The fault that was set at exactly this place.
  virtual Deed Heal(const std::string& device, const std::string& attribute) = 0;
  virtual Deed HealAll() = 0;
};
