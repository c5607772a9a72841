#include "virtualcharger/scenario/batch.h"

#include <fmt/format.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <system_error>
#include <vector>

#include "virtualcharger/scenario/childprocess.h"
#include "virtualcharger/scenario/exitstatus.h"
#include "virtualcharger/scenario/interrupt.h"
#include "virtualcharger/scenario/junit.h"

namespace {

constexpr int kGlance = 20;  // ms, between two looks at the child

// A file in memory, which a child can write to.
class CMemoryFile {
 public:
  CMemoryFile() : mDescriptor(memfd_create("suite", MFD_CLOEXEC)) {
    if (mDescriptor < 0) throw std::system_error(errno, std::generic_category(), "memfd_create");
  }
  CMemoryFile(const CMemoryFile&) = delete;
  CMemoryFile& operator=(const CMemoryFile&) = delete;
  ~CMemoryFile() { close(mDescriptor); }

  int Descriptor() const { return mDescriptor; }

  std::string Text() const {
    std::string text;
    std::array<char, 4096> part{};
    for (;;) {
      const auto size =
          pread(mDescriptor, part.data(), part.size(), static_cast<off_t>(text.size()));
      if (size <= 0) return text;
      text.append(part.data(), static_cast<std::size_t>(size));
    }
  }

 private:
  const int mDescriptor;
};

struct SPlayed {
  std::string file;
  int status;
  double seconds;
  std::string end;  // where it did not end by itself
};

std::vector<std::string> Command(const SRunOptions& options, const std::string& file) {
  std::vector<std::string> command{
      ThisProgram(), "--scenario",   file,   "--suite",
      "--daemon",    options.daemon, "--hz", std::to_string(options.hardware.hz)};
  if (options.hardware.quickSensor) command.emplace_back("--quick-sensor");
  if (options.showLog) command.emplace_back("--log");
  if (options.keepRoot) command.emplace_back("--keep");
  return command;
}

// How the child ended. An interrupt is handed on to it, and it ends in order.
int AwaitEnd(CChildProcess& child, CInterrupt& interrupt) {
  pollfd input{interrupt.Descriptor(), POLLIN, 0};
  while (!child.Ended()) {
    try {
      interrupt.Check();
    } catch (const CInterrupted& interrupted) {
      child.Signal(interrupted.Signal());
    }
    poll(&input, 1, kGlance);
  }
  return *child.Ended();
}

SPlayed Play(const SRunOptions& options, const std::string& file, CInterrupt& interrupt,
             std::string& suites) {
  const auto begin = std::chrono::steady_clock::now();
  const CMemoryFile suite;
  CChildProcess child(Command(options, file), {suite.Descriptor(), STDOUT_FILENO, STDERR_FILENO});
  const int end = AwaitEnd(child, interrupt);
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
  suites += suite.Text();
  if (WIFEXITED(end)) return {file, WEXITSTATUS(end), time.count(), ""};
  const auto text = "virtual-charger has ended by itself: " + DescribeEnd(end);
  suites += SuiteXml({file, {{"the scenario", 0, time.count(), EVerdict::Broken, text}}});
  return {file, Status(EExit::Failed), time.count(), text};
}

// The higher, the worse.
int Rank(int status) {
  constexpr std::array order{Status(EExit::AsExpected), Status(EExit::CannotRun),
                             Status(EExit::Failed), Status(EExit::Usage)};
  return static_cast<int>(std::ranges::find(order, status) - order.begin());
}

std::string Verdict(int status) {
  if (status == Status(EExit::AsExpected)) return "as expected";
  if (status == Status(EExit::CannotRun)) return "cannot run";
  return status < kSignalled ? "FAILED" : "interrupted";
}

void Summarise(const std::vector<SPlayed>& played, std::size_t asked) {
  const auto good = std::ranges::count(played, Status(EExit::AsExpected), &SPlayed::status);
  fmt::print("\n{} of {} scenarios as expected\n", good, asked);
  for (const auto& [file, status, seconds, end] : played) {
    fmt::print("  {:11} {:6.1f} s  {}{}\n", Verdict(status), seconds, file,
               end.empty() ? "" : ": " + end);
  }
}

}  // namespace

int PlayBatch(const SRunOptions& options, std::string& suites) {
  CInterrupt interrupt;
  std::vector<SPlayed> played;
  for (const auto& file : options.scenarios) {
    fmt::print("{}=== {}\n", played.empty() ? "" : "\n", file);
    std::fflush(stdout);
    played.push_back(Play(options, file, interrupt, suites));
    if (played.back().status >= kSignalled) break;
  }
  Summarise(played, options.scenarios.size());
  return std::ranges::max(played, {}, [](const SPlayed& each) { return Rank(each.status); }).status;
}
