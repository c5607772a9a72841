// The virtual charger as scenarios use it: each operation waits until what it does has come into
// force, and every expectation until it holds.
#pragma once

#include <chrono>
#include <functional>
#include <stdexcept>
#include <string>

#include "virtualcharger/scenario/bench.h"
#include "virtualcharger/scenario/interrupt.h"
#include "virtualcharger/scenario/steptable.h"

// This machine cannot run the hardware; the text tells the remedy.
class CCannotRun : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// While it waits, a process that ends by itself is a failure, and CInterrupted is thrown.
//
// Threads: one.
class CCharger : private IObserver {
 public:
  // What a step is waiting for now, for people.
  struct SWaiting {
    std::string awaited;
    std::string seen;  // at this moment
  };

  CCharger(CBench& bench, CInterrupt& interrupt);

  // Returns when the daemon serves, knows its peers and shows that it is not enabled. Throws
  // CCannotRun and CStepFailure. Called while the process has one thread.
  void Start();
  // Throws CStepFailure where something does not end orderly.
  void Stop();
  // The same charger as it is when a scenario begins, whatever was done with it; with a store of
  // this text, where there is one. Throws CStepFailure.
  void Renew(const std::string& store = {});

  // Nothing while no expectation waits. May be asked by the watcher.
  std::optional<SWaiting> Waiting() const;
  // Called every few ms while a step waits for anything.
  void SetWatcher(std::function<void()> watcher) { mWatcher = std::move(watcher); }

  // Returns the step's note. Throws CStepFailure.
  std::string Do(const StepAction& step);

 private:
  using TimePoint = std::chrono::steady_clock::time_point;

  // For what only a fault can delay.
  static constexpr std::chrono::seconds kLimit{5};

  struct SAwaited {
    std::string words;
    std::function<std::string()> seen;
  };

  // The moment up to which something is in time, and what failures say of it.
  struct SLimit {
    TimePoint latest;
    std::string words;  // empty where nobody asked for it

    std::chrono::milliseconds Rest() const;
  };

  void ExpectState(int state, Limit within) override;
  void ExpectAlive() override;
  void ExpectLamp(const SLamp& lamp, Limit within) override;
  void ExpectBrightness(int percent, Limit within) override;
  void ExpectDisplay(int percent, Limit within) override;
  void ExpectSignal(int identifier, const std::string& text, Limit within) override;
  void ExpectAttribute(const std::string& device, const std::string& attribute,
                       const std::string& text) override;
  void ExpectReport(int state) override;
  void ExpectNoReport() override;
  void ExpectLog(std::optional<Log::ELogLevel> level, const std::string& text,
                 Limit within) override;
  void ExpectNoLog(Log::ELogLevel level, const std::string& text) override;
  std::string ExpectBeep(const SBeepBounds& bounds) override;
  void ExpectNoBeep() override;
  void ExpectWrite(const std::string& channel, const std::string& attribute,
                   const std::string& text) override;
  void ExpectNoWrite() override;
  void Mark() override;
  void Wait(std::chrono::milliseconds time) override;

  void Begin();
  // At the deed's end, with its note.
  std::string Await(const Deed& deed);
  // False where the condition does not hold within the time.
  bool Await(const std::function<bool()>& condition, std::chrono::milliseconds limit);
  void Look();
  void Pause();
  void Expect(const std::string& expected, Limit within, const std::function<SSeen()>& look);
  // Tells meanwhile what is awaited and what is seen.
  bool Await(const std::string& awaited, const std::function<std::string()>& seen,
             const std::function<bool()>& condition, std::chrono::milliseconds limit);
  SLimit LimitOf(Limit within) const;
  [[noreturn]] static void Fail(const std::string& expected, const std::string& seen);
  std::string ReportWords(const SLast<int>& report) const;
  std::string When(TimePoint time) const;

  CBench& mBench;
  CInterrupt& mInterrupt;
  CWriteHistory::Mark mMark = 0;
  CToneFile::Mark mToneMark = 0;
  CProcesses::Reports::Mark mReportMark = 0;
  std::optional<SAwaited> mAwaited;
  std::function<void()> mWatcher;
  TimePoint mChangeBegin = mBench.Begin();
};
