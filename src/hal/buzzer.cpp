#include "src/hal/buzzer.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <string>
#include <utility>

#include "platform/diagnostics/diagnosticssignal.h"
#include "platform/log/log.h"
#include "platform/rpc/communicationexception.h"
#include "src/hal/tonedevice.h"
#include "utils/signalcatalogue.h"
#include "utils/traceentry.h"

namespace {

constexpr int kToneDivisor = 298;  // about 4 kHz
constexpr std::chrono::milliseconds kBeepLength{300};
const std::string kVolume = "volume";

bool IsDigit(char character) {
  return character >= '0' && character <= '9';
}

void Report(bool on) {
  try {
    CDiagnosticsSignal<bool> signal(&Signals::BuzzerState, ipc::EInstanceTypeAll);
    {
      const auto lock = signal.Lock();
      signal.SetValue(on);
      signal.SetTimestamp(std::chrono::system_clock::now());
    }
    signal.Send();
  } catch (const Rpc::CommunicationException& exception) {
    LOG(Error, "(src/hal/buzzer:135) Failed to send diagnostics data. Error: '{}'.",
        exception.what());
  }
}

}  // namespace

CBuzzer::CBuzzer(std::shared_ptr<CSysfsAccess> access)
    : CBuzzer(std::move(access), std::make_shared<CToneDevice>()) {}

CBuzzer::CBuzzer(std::shared_ptr<CSysfsAccess> access, std::shared_ptr<IToneDevice> toneDevice,
                 std::shared_ptr<ISteadyClock> clock)
    : CWorker("buzzer", std::move(clock)),
      mAccess(std::move(access)),
      mToneDevice(std::move(toneDevice)) {
  TraceEntry<CBuzzer>("CBuzzer");
  CWorker::Start();
}

CBuzzer::~CBuzzer() {
  TraceEntry<CBuzzer>("~CBuzzer");
  if (mSwitchOff) {
    mSwitchOff->Cancel();
    mSwitchOff.reset();
  }
  CWorker::Sync();
  try {
    BuzzerEnable(false);
  } catch (const std::exception& exception) {
    LOG(Error, "(src/hal/buzzer:58) Disabling buzzer failed. Exception: {}", exception.what());
  }
  CWorker::Stop();
}

void CBuzzer::Beep() {
  TraceEntry<CBuzzer>("Beep");
  BuzzerEnable(true);
  mSwitchOff = AddCall([this] { BuzzerEnable(false); }, Now() + kBeepLength,
                       std::chrono::nanoseconds::zero());
}

bool CBuzzer::ReadVolume(uint8_t& volume) {
  TraceEntry<CBuzzer>("ReadVolume");
  std::string text;
  if (!mAccess->Read(kVolume, text)) {
    LOG(Error, "(src/hal/buzzer:77) Failed to read buzzer volume level");
    return false;
  }
  if (!std::ranges::all_of(text, IsDigit)) {
    LOG(Error, "(src/hal/buzzer:85) Output '{}' contains unexpected non-numeric value.", text);
    return false;
  }
  volume = static_cast<uint8_t>(std::stoi(text));
  return true;
}

bool CBuzzer::WriteVolume(uint8_t volume) {
  TraceEntry<CBuzzer>("WriteVolume");
  return mAccess->Write(kVolume, std::to_string(volume));
}

void CBuzzer::BuzzerEnable(bool on) {
  TraceEntry<CBuzzer>("BuzzerEnable");
  const int divisor = on ? kToneDivisor : 0;
  const int descriptor = mToneDevice->Open(kTonePath);
  if (descriptor < 0) {
    LOG(Error, "(src/hal/buzzer:111) Could not open tty device {}, error: {}", kTonePath,
        descriptor);
    return;
  }
  const int result = mToneDevice->SetTone(descriptor, divisor);
  if (result < 0) {
    LOG(Error, "(src/hal/buzzer:117) Could not write buzzer value {} to fd {}, error: {}", divisor,
        descriptor, result);
  }
  mToneDevice->Close(descriptor);
  if (result >= 0) {
    Report(on);
  }
}
