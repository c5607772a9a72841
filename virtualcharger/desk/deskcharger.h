// The charger as the page steers it: every step is begun at once, and goes on while others begin.
#pragma once

#include "virtualcharger/scenario/bench.h"
#include "virtualcharger/scenario/steptable.h"

// What only looks is refused: there is nobody who waits.
//
// Threads: one.
class CDeskCharger : private ICharger {
 public:
  explicit CDeskCharger(CBench& bench) : mBench(bench) {}

  // Begins the step. Throws CStepFailure where it cannot begin.
  Deed Do(const StepAction& step);

 private:
  void Request(ERequest request, bool accepted) override;
  void Trigger(int event, bool accepted) override;
  std::string SetConnector(int state) override;
  std::string SetError(int identifier, bool on) override;
  void SetLight(double lux) override;
  void SetStored(const std::string& key, const Json::Value& value) override;
  void SetMeter(bool accepts) override;
  void SetLogLevel(Log::ELogLevel level) override;
  void ExpectState(int state, Limit within) override;
  void ExpectAlive() override;
  void ExpectLamp(const SLamp& lamp, Limit within) override;
  void ExpectBrightness(int percent, Limit within) override;
  void ExpectDisplay(int percent, Limit within) override;
  void ExpectSignal(int identifier, const std::string& text, Limit within) override;
  void ExpectAttribute(const std::string& device, const std::string& attribute,
                       const std::string& text) override;
  std::string ExpectBeep(const SBeepBounds& bounds) override;
  void ExpectNoBeep() override;
  void ExpectReport(int state) override;
  void ExpectNoReport() override;
  void ExpectLog(std::optional<Log::ELogLevel> level, const std::string& text,
                 Limit within) override;
  void ExpectNoLog(Log::ELogLevel level, const std::string& text) override;
  void ExpectWrite(const std::string& channel, const std::string& attribute,
                   const std::string& text) override;
  void ExpectNoWrite() override;
  void Mark() override;
  void Control(EProcessAction action, const std::string& process) override;
  void SetFault(const std::string& device, const std::string& attribute,
                const SFault& fault) override;
  void Heal() override;
  void Wait(std::chrono::milliseconds time) override;

  CBench& mBench;
  Deed mBegun;
};
