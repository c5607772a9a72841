// The whole virtual charger: its hardware in this process, the daemon and the peers around it.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "virtualcharger/hardware/faults.h"
#include "virtualcharger/hardware/mountedhardware.h"
#include "virtualcharger/hardware/statuslight.h"
#include "virtualcharger/hardware/writehistory.h"
#include "virtualcharger/scenario/icharger.h"
#include "virtualcharger/scenario/processes.h"

// What can be seen from outside at one moment.
struct SView {
  std::chrono::milliseconds time;  // since the charger was made
  SLamp lamp;
  std::array<std::uint32_t, 3> levels;  // the brightest ones that the channels reach
  std::string ledState;                 // as the daemon reported it last; empty before
  std::array<std::string, 3> patterns;  // of the channels red, green, blue
};

// This machine cannot run the hardware; the text tells the remedy.
class CCannotRun : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Threads: one.
class CCharger : public ICharger {
 public:
  // hz is the timer frequency of the kernel that plays the patterns.
  CCharger(const CProcesses::SSettings& settings, unsigned hz, CInterrupt& interrupt);

  // Returns when the daemon is at work: subscribed, and the lamp shows that a car may come. Throws
  // CCannotRun and CStepFailure. Called while the process has one thread.
  void Start();
  // Throws CStepFailure where something does not end orderly.
  void Stop();

  SView View() const;
  CPrivateRoot& Root() { return mProcesses.Root(); }

  std::string SetConnector(int state) override;
  std::string SetError(int identifier, bool on) override;
  void ExpectLamp(const SLamp& lamp, Limit within) override;
  void ExpectSignal(int identifier, const std::string& text, Limit within) override;
  void ExpectWrite(const std::string& channel, const std::string& attribute,
                   const std::string& text) override;
  void ExpectNoWrite() override;
  void Mark() override;
  void Control(EProcessAction action, const std::string& process) override;
  void SetFault(const std::string& channel, const std::string& attribute,
                const SFault& fault) override;
  void Heal() override;
  void Wait(std::chrono::milliseconds time) override;

 private:
  using TimePoint = std::chrono::steady_clock::time_point;

  // A lamp or a text, and since when it is so.
  struct SSince {
    bool asExpected;
    std::string words;
    TimePoint time;
  };

  void Watch();
  void BeginChange();
  void Expect(const std::string& expected, Limit within, const std::function<SSince()>& look);
  std::string Tell(const std::string& peer, const std::string& command);
  std::string When(TimePoint time) const;

  const TimePoint mBegin = std::chrono::steady_clock::now();
  const std::shared_ptr<CFaults> mFaults;
  const std::shared_ptr<CWriteHistory> mHistory;
  CStatusLight mLight;
  std::optional<CMountedHardware> mHardware;
  CWriteHistory::Mark mMark = 0;
  SLamp mLamp;  // as watched last
  TimePoint mLampSince = mBegin;
  TimePoint mChangeBegin = mBegin;
  // By the peer: what it told last, where not all subscribers have replied to it.
  std::map<std::string, std::string> mUnanswered;
  CProcesses mProcesses;  // last: watches the members above
};

// "blue pulsating", "off".
std::string LampWords(const SLamp& lamp);
