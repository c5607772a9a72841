#include "virtualcharger/scenario/run.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdio>
#include <deque>
#include <filesystem>
#include <fstream>

#include "virtualcharger/scenario/charger.h"
#include "virtualcharger/scenario/interrupt.h"
#include "virtualcharger/scenario/player.h"
#include "virtualcharger/scenario/scenario.h"
#include "virtualcharger/scenario/transcript.h"

namespace {

constexpr std::size_t kLastLines = 12;
constexpr int kSignalled = 128;

int Status(EExit exit) {
  return static_cast<int>(exit);
}

std::string LastLines(const std::string& path) {
  std::deque<std::string> last;
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    last.push_back(line);
    if (last.size() > kLastLines) last.pop_front();
  }
  return fmt::format("{}", fmt::join(last, "\n"));
}

// Does the steps one by one; what it was at when it failed is left for the message.
class CRun {
 public:
  CRun(const SScenario& scenario, CBench& bench, CCharger& charger, CTranscript& transcript)
      : mPlayer(scenario, charger), mBench(bench), mCharger(charger), mTranscript(transcript) {}

  void Execute(CInterrupt& interrupt) {
    mCharger.Start();
    mPlaying = true;
    mTranscript.Header();
    mTranscript.Step("(the charger is ready)", mBench.View());
    while (const auto* step = mPlayer.Step()) {
      interrupt.Check();  // few steps wait, and rounds can be many
      const auto note = mPlayer.Do();
      ++mSteps;
      mTranscript.Step(step->text, mBench.View());
      if (!note.empty()) mTranscript.Note(note);
    }
    mCharger.Stop();
  }

  std::string Place(const std::string& file) const {
    const auto* step = mPlayer.Step();
    if (!mPlaying) return file + ": the start of the charger";
    if (step == nullptr) return file + ": the end of the run";
    const auto round = mPlayer.Round();
    return fmt::format("{}:{}: {}{}", file, step->line, step->text,
                       round.empty() ? "" : fmt::format(" ({})", round));
  }

  // Shows the state at the failure in the columns of the others.
  void ShowFailedStep() {
    if (mPlaying && mPlayer.Step() != nullptr) {
      mTranscript.Step(mPlayer.Step()->text, mBench.View());
    }
  }

  int Steps() const { return mSteps; }

 private:
  CPlayer mPlayer;
  const CBench& mBench;
  CCharger& mCharger;
  CTranscript& mTranscript;
  bool mPlaying = false;
  int mSteps = 0;
};

int RunScenario(const SRunOptions& options, const SScenario& scenario) {
  CInterrupt interrupt;
  CTranscript transcript(stdout);
  CBench bench({options.daemon, options.showLog}, options.hardware);
  CCharger charger(bench, interrupt);
  auto& root = bench.Processes().Root();
  if (options.keepRoot) {
    root.Keep();
    transcript.Line(fmt::format("the run's folder: {}\n", root.Path()));
  }
  CRun run(scenario, bench, charger, transcript);
  try {
    run.Execute(interrupt);
  } catch (const CCannotRun& cannot) {
    fmt::print(stderr, "virtual-charger: {}\n", cannot.what());
    return Status(EExit::CannotRun);
  } catch (const CInterrupted& interrupted) {
    fmt::print(stderr, "interrupted\n");
    return kSignalled + interrupted.Signal();
  } catch (const std::exception& failure) {
    run.ShowFailedStep();
    transcript.Failure("FAILED  " + run.Place(options.scenario), failure.what());
    const auto lines = LastLines(root.Log("feedback"));
    transcript.Failure("the daemon's last lines:", lines.empty() ? "(none)" : lines);
    return Status(EExit::Failed);
  }
  transcript.Line(fmt::format("{} steps, all as expected\n", run.Steps()));
  return Status(EExit::AsExpected);
}

}  // namespace

int Run(const SRunOptions& options) {
  const auto scenario = ReadScenario(options.scenario);
  for (const auto& error : scenario.errors) fmt::print(stderr, "{}\n", error);
  if (!scenario.errors.empty()) return Status(EExit::Usage);
  if (options.checkOnly) {
    fmt::print("{}: {} steps, all understood\n", options.scenario, scenario.steps.size());
    return Status(EExit::AsExpected);
  }
  if (access(options.daemon.c_str(), X_OK) != 0) {
    fmt::print(stderr, "virtual-charger: no daemon at {}; build it with ./run --build\n",
               options.daemon);
    return Status(EExit::Usage);
  }
  auto absolute = options;
  absolute.daemon = std::filesystem::absolute(options.daemon);
  return RunScenario(absolute, scenario);
}
