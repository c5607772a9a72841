#include "virtualcharger/desk/deskcharger.h"

#include <utility>

namespace {

[[noreturn]] void Refuse() {
  throw CStepFailure(
      "this step waits or looks, which is for scenarios: put it into one and play that");
}

void CheckHardware(const CBench& bench) {
  if (bench.HasHardware()) return;
  throw CStepFailure("nothing would come of it: this machine gives no virtual hardware");
}

}  // namespace

Deed CDeskCharger::Do(const StepAction& step) {
  mBegun = nullptr;
  auto note = step(*this);
  return mBegun ? std::exchange(mBegun, nullptr) : Done(std::move(note));
}

void CDeskCharger::Request(ERequest request, bool accepted) {
  mBegun = mBench.Request(request, accepted);
}

void CDeskCharger::Trigger(int event, bool accepted) {
  mBegun = mBench.Trigger(event, accepted);
}

std::string CDeskCharger::SetConnector(int state) {
  mBegun = mBench.SetConnector(state);
  return {};
}

std::string CDeskCharger::SetError(int identifier, bool on) {
  mBegun = mBench.SetError(identifier, on);
  return {};
}

void CDeskCharger::SetLight(double lux) {
  CheckHardware(mBench);
  mBench.SetLight(lux);
}

void CDeskCharger::SetStored(const std::string& key, const Json::Value& value) {
  mBench.SetStored(key, value);
}

void CDeskCharger::SetMeter(bool accepts) {
  mBegun = mBench.SetMeter(accepts);
}

void CDeskCharger::SetLogLevel(Log::ELogLevel level) {
  mBegun = mBench.SetLogLevel(level);
}

void CDeskCharger::Control(EProcessAction action, const std::string& process) {
  mBegun = mBench.Control(action, process);
}

void CDeskCharger::SetFault(const std::string& device, const std::string& attribute,
                            const SFault& fault) {
  CheckHardware(mBench);
  mBench.SetFault(device, attribute, fault);
}

void CDeskCharger::Heal() {
  CheckHardware(mBench);
  mBench.Heal();
}

void CDeskCharger::ExpectState(int, Limit) {
  Refuse();
}

void CDeskCharger::ExpectAlive() {
  Refuse();
}

void CDeskCharger::ExpectLamp(const SLamp&, Limit) {
  Refuse();
}

void CDeskCharger::ExpectBrightness(int, Limit) {
  Refuse();
}

void CDeskCharger::ExpectDisplay(int, Limit) {
  Refuse();
}

void CDeskCharger::ExpectSignal(int, const std::string&, Limit) {
  Refuse();
}

void CDeskCharger::ExpectAttribute(const std::string&, const std::string&, const std::string&) {
  Refuse();
}

std::string CDeskCharger::ExpectBeep(const SBeepBounds&) {
  Refuse();
}

void CDeskCharger::ExpectNoBeep() {
  Refuse();
}

void CDeskCharger::ExpectReport(int) {
  Refuse();
}

void CDeskCharger::ExpectNoReport() {
  Refuse();
}

void CDeskCharger::ExpectLog(std::optional<Log::ELogLevel>, const std::string&, Limit) {
  Refuse();
}

void CDeskCharger::ExpectNoLog(Log::ELogLevel, const std::string&) {
  Refuse();
}

void CDeskCharger::ExpectWrite(const std::string&, const std::string&, const std::string&) {
  Refuse();
}

void CDeskCharger::ExpectNoWrite() {
  Refuse();
}

void CDeskCharger::Mark() {
  Refuse();
}

void CDeskCharger::Wait(std::chrono::milliseconds) {
  Refuse();
}
