#include "virtualcharger/scenario/run.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <optional>
#include <system_error>
#include <vector>

#include "virtualcharger/scenario/batch.h"
#include "virtualcharger/scenario/scenariorun.h"

namespace {

// Opened before the machine's paths change for this process; written at the end.
class CJUnitFile {
 public:
  explicit CJUnitFile(const std::string& path) : mPath(path), mFile(path, std::ios::trunc) {
    if (!mFile) Fail();
  }

  void Write(const std::string& suites) {
    mFile << JUnitXml(suites);
    if (!mFile.flush()) Fail();
  }

 private:
  [[noreturn]] void Fail() const {
    throw std::runtime_error(
        fmt::format("cannot write {}: {}", mPath, std::generic_category().message(errno)));
  }

  const std::string mPath;
  std::ofstream mFile;
};

std::string NotUnderstood(const std::string& file, const std::vector<std::string>& errors) {
  const auto text = fmt::format("{}", fmt::join(errors, "\n"));
  return SuiteXml({file, {{"the scenario is understood", 0, 0, EVerdict::Broken, text}}});
}

// Reads all before anything starts; false where one is not understood.
bool ReadAll(const std::vector<std::string>& files, std::vector<SScenario>& scenarios,
             std::string& suites) {
  bool understood = true;
  for (const auto& file : files) {
    scenarios.push_back(ReadScenario(file));
    const auto& errors = scenarios.back().errors;
    for (const auto& error : errors) fmt::print(stderr, "{}\n", error);
    if (errors.empty()) continue;
    understood = false;
    suites += NotUnderstood(file, errors);
  }
  return understood;
}

void WriteSuite(const std::string& suite) {
  // A parent that is gone needs none.
  [[maybe_unused]] const auto written = write(kSuiteDescriptor, suite.data(), suite.size());
}

int Play(const SRunOptions& options, const std::vector<SScenario>& scenarios, std::string& suites) {
  if (access(options.daemon.c_str(), X_OK) != 0) {
    fmt::print(stderr, "virtual-charger: no daemon at {}; build it with ./run --build\n",
               options.daemon);
    return Status(EExit::Usage);
  }
  auto absolute = options;
  absolute.daemon = std::filesystem::absolute(options.daemon);
  if (scenarios.size() > 1) return PlayBatch(absolute, suites);
  const auto result = PlayScenario(absolute, options.scenarios.front(), scenarios.front());
  suites += SuiteXml(result.suite);
  if (options.asChild) WriteSuite(suites);
  return result.status;
}

int Check(const SRunOptions& options, const std::vector<SScenario>& scenarios) {
  for (std::size_t place = 0; place < scenarios.size(); ++place) {
    fmt::print("{}: {} steps, all understood\n", options.scenarios[place],
               scenarios[place].steps.size());
  }
  return Status(EExit::AsExpected);
}

}  // namespace

int Run(const SRunOptions& options) {
  // Where nobody reads any more the run ends in order, and its folder goes with it.
  std::signal(SIGPIPE, SIG_IGN);
  try {
    std::optional<CJUnitFile> junit;
    if (!options.junit.empty()) junit.emplace(options.junit);
    std::vector<SScenario> scenarios;
    std::string suites;
    int status = Status(EExit::Usage);
    if (ReadAll(options.scenarios, scenarios, suites)) {
      status = options.checkOnly ? Check(options, scenarios) : Play(options, scenarios, suites);
    }
    if (junit) junit->Write(suites);
    return status;
  } catch (const std::exception& exception) {
    fmt::print(stderr, "virtual-charger: {}\n", exception.what());
    return Status(EExit::Failed);
  }
}
