#include "virtualcharger/scenario/scenariorun.h"

#include <fmt/format.h>

#include <csignal>
#include <cstdio>
#include <deque>
#include <fstream>
#include <utility>

#include "virtualcharger/scenario/charger.h"
#include "virtualcharger/scenario/exitstatus.h"
#include "virtualcharger/scenario/interrupt.h"
#include "virtualcharger/scenario/player.h"
#include "virtualcharger/scenario/transcript.h"

namespace {

constexpr std::size_t kLastLines = 12;
constexpr std::chrono::milliseconds kWorthTelling{150};  // steps that are shorter are not drawn

std::string LastLines(const std::string& path) {
  std::deque<std::string> last;
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    if (!IsOfSettling(line)) last.push_back(line);
    if (last.size() > kLastLines) last.pop_front();
  }
  return last.empty() ? "(none)" : fmt::format("{}", fmt::join(last, "\n"));
}

class CScenarioRun {
 public:
  CScenarioRun(const SRunOptions& options, const std::string& file, const SScenario& scenario)
      : mFile(file),
        mSections(file, scenario),
        mBench({options.daemon, options.showLog}, options.hardware),
        mPlayer(scenario, [this](const StepAction& step) { return mCharger.Do(step); }) {
    if (options.keepRoot) {
      mBench.Processes().Root().Keep();
      mTranscript.Line(fmt::format("the run's folder: {}\n", mBench.Processes().Root().Path()));
    }
    // The log's own lines would come into the middle of the one that is drawn.
    if (!options.showLog) mCharger.SetWatcher([this] { TellWhatIsAwaited(); });
  }

  SRunResult Play() {
    const int status = TryAll();
    return {status, mSections.Suite()};
  }

 private:
  int TryAll() {
    try {
      PlayAll();
    } catch (const CCannotRun& cannot) {
      fmt::print(stderr, "virtual-charger: {}\n", cannot.what());
      mSections.SkipAll(cannot.what());
      return Status(EExit::CannotRun);
    } catch (const CInterrupted& interrupted) {
      mTranscript.Clear();
      fmt::print(stderr, "interrupted\n");
      mSections.Break(EVerdict::Broken, "interrupted at " + Place(), "");
      return kSignalled + interrupted.Signal();
    } catch (const std::exception& failure) {
      TellFailure(failure.what());
      return Status(EExit::Failed);
    }
    mTranscript.Line(fmt::format("{} steps, all as expected\n", mSteps));
    return Status(EExit::AsExpected);
  }

  void PlayAll() {
    mCharger.Start();
    mStarted = true;
    mTranscript.Header();
    mTranscript.Step("(the charger is ready)", mBench.View());
    while (const auto* step = mPlayer.Step()) {
      mInterrupt.Check();  // few steps wait, and rounds can be many
      if (std::ferror(stdout) != 0) throw CInterrupted(SIGPIPE);
      Begin(step);
      const auto note = mPlayer.Do();
      ++mSteps;
      mTranscript.Step(step->text, mBench.View());
      if (!note.empty()) mTranscript.Note(note);
    }
    Begin(nullptr);
    mCharger.Stop();
  }

  void Begin(const SStep* step) {
    mSections.Enter(step);
    mStepBegin = std::chrono::steady_clock::now();
  }

  std::string What() const {
    if (!mStarted) return "the start of the charger";
    return mPlayer.Step() == nullptr ? "the end of the run" : mPlayer.Step()->text;
  }

  std::string Place() const {
    if (!mStarted || mPlayer.Step() == nullptr) return mFile + ": " + What();
    const auto round = mPlayer.Round();
    return fmt::format("{}:{}: {}{}", mFile, mPlayer.Step()->line, What(),
                       round.empty() ? "" : fmt::format(" ({})", round));
  }

  void TellWhatIsAwaited() {
    if (std::chrono::steady_clock::now() < mStepBegin + kWorthTelling) return;
    const auto waiting = mCharger.Waiting();
    mTranscript.Progress(
        What(), mBench.View().time,
        waiting ? fmt::format("awaited: {}; seen: {}", waiting->awaited, waiting->seen) : "");
  }

  // Shows the state at the failure in the columns of the others.
  void TellFailure(const std::string& text) {
    if (mStarted && mPlayer.Step() != nullptr) {
      mTranscript.FailedStep(mPlayer.Step()->text, mBench.View());
    }
    mTranscript.Failure("FAILED  " + Place(), text);
    const auto lines = LastLines(mBench.Processes().Root().Log("feedback"));
    mTranscript.Failure("the daemon's last lines:", lines);
    mSections.Break(EVerdict::Failed, Place() + '\n' + text, "the daemon's last lines:\n" + lines);
  }

  const std::string mFile;
  CInterrupt mInterrupt;
  CTranscript mTranscript{stdout};
  CSections mSections;
  CBench mBench;
  CCharger mCharger{mBench, mInterrupt};
  CPlayer mPlayer;
  bool mStarted = false;
  int mSteps = 0;
  std::chrono::steady_clock::time_point mStepBegin = std::chrono::steady_clock::now();
};

}  // namespace

SRunResult PlayScenario(const SRunOptions& options, const std::string& file,
                        const SScenario& scenario) {
  return CScenarioRun(options, file, scenario).Play();
}
