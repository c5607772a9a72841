#include "virtualcharger/scenario/options.h"

#include <fmt/format.h>

#include <functional>
#include <map>

#include "utils/words.h"
#include "virtualcharger/scenario/steptable.h"

namespace {

constexpr auto kUsage = R"(usage: virtual-charger [OPTION]...
       virtual-charger --scenario FILE... [OPTION]...
       virtual-charger --check FILE...

Runs the feedback daemon in a charger that is made of software: lamp, light sensor and beeper as
the kernel would offer them, a board controller, a session manager, a diagnostics service and a
meter; nothing on this machine is changed. Without a scenario the charger lives until Ctrl-C, and
its page in a browser shows and steers it. A scenario tells what happens and what is expected.

options:
  --scenario FILE  run the steps of this file; several files one after the other, each in a new
                   charger
  --check FILE     only say whether the file's steps are understood
  --junit FILE     write what came out for CI, in JUnit's format: a suite for each scenario, a test
                   case for each "say"
  --name NAME      of the charger with the page, several run side by side
                   (default: charger, or charger-2 and so on where that runs already)
  --port N         of its page (default: 8765, or the next one that is free)
  --open           show the page in a browser
  --daemon PATH    the daemon to run (default: "feedback" beside this program)
  --hz N           timer frequency of the kernel that plays the lamp's patterns (default: 250)
  --quick-sensor   the light sensor answers at once, not after its integration time
  --log            show the daemon's log as it comes
  --keep           keep the run's folder with the store and the log files
  --help           this text

steps, one a line; "#" begins a comment:
)";

constexpr auto kRest = R"(
example:
  disable
  enable
  connector charging
  expect lamp blue pulsating within 1s
  error 1004 on
  expect lamp red blink3
  mark
  connector charging
  expect written nothing

exit status:
  0    all as expected
  1    a step did not come out as expected
  2    the command line or the scenario is wrong, or there is no daemon
  3    this machine cannot run it: no FUSE or no namespaces
  130  interrupted
)";

constexpr unsigned kMostHz = 100'000;
constexpr unsigned kMostPort = 65'535;

std::optional<unsigned> Number(const std::string& text, unsigned least, unsigned most) {
  const auto number = ParseNumber<unsigned>(text);
  if (!number || *number < least || *number > most) return {};
  return number;
}

// The words after the program's name, each option with its value.
class CReader {
 public:
  explicit CReader(const std::vector<std::string>& arguments) : mArguments(arguments) {}

  bool Next(std::string& option) {
    if (mNext == mArguments.size()) return false;
    option = mArguments[mNext++];
    return true;
  }
  // False where it is missing.
  bool Value(std::string& value) { return Next(value); }
  // Up to the next option, at least one.
  bool Values(std::vector<std::string>& values) {
    std::string value;
    while (mNext < mArguments.size() && !mArguments[mNext].starts_with("--") && Next(value)) {
      values.push_back(value);
    }
    return !value.empty();
  }

 private:
  const std::vector<std::string>& mArguments;
  std::size_t mNext = 0;
};

Options ParsePeer(CReader& reader) {
  SPeerSettings peer;
  std::string option;
  std::string value;
  if (!reader.Next(peer.name)) return SUsageError{"--peer needs a name"};
  while (reader.Next(option) && reader.Value(value)) {
    if (option == "--store") peer.store = value;
    if (option == "--state") {
      peer.connectorState = static_cast<int>(Number(value, 0, 1'000'000).value_or(0));
    }
  }
  return peer;
}

const std::map<std::string, std::function<void(SRunOptions&)>> kSwitches{
    {"--quick-sensor", [](auto& options) { options.hardware.quickSensor = true; }},
    {"--log", [](auto& options) { options.showLog = true; }},
    {"--keep", [](auto& options) { options.keepRoot = true; }},
    {"--suite", [](auto& options) { options.asChild = true; }},
    {"--open", [](auto& options) { options.openPage = true; }},
};

// Each takes its value, or tells what was expected.
using Take = std::function<std::string(SRunOptions&, const std::string& value)>;

const std::map<std::string, Take> kValues{
    {"--junit",
     [](auto& options, const auto& value) {
       options.junit = value;
       return "";
     }},
    {"--daemon",
     [](auto& options, const auto& value) {
       options.daemon = value;
       return "";
     }},
    {"--name",
     [](auto& options, const auto& value) {
       options.name = value;
       return "";
     }},
    {"--port",
     [](auto& options, const auto& value) {
       const auto port = Number(value, 1, kMostPort);
       options.port = static_cast<std::uint16_t>(port.value_or(0));
       return port ? std::string() : fmt::format("a number from 1 to {}", kMostPort);
     }},
    {"--hz",
     [](auto& options, const auto& value) {
       const auto hz = Number(value, 1, kMostHz);
       options.hardware.hz = hz.value_or(0);
       return hz ? std::string() : fmt::format("a number from 1 to {}", kMostHz);
     }},
};

std::vector<std::string> Known() {
  std::vector<std::string> known{"--help", "--scenario", "--check"};
  for (const auto& [name, take] : kSwitches) known.push_back(name);
  for (const auto& [name, take] : kValues) known.push_back(name);
  return known;
}

}  // namespace

Options ParseOptions(const std::vector<std::string>& arguments, const std::string& programFolder) {
  SRunOptions options;
  options.daemon = programFolder + "/feedback";
  CReader reader(arguments);
  std::string option;
  std::string value;
  while (reader.Next(option)) {
    if (option == "--peer") return ParsePeer(reader);
    if (option == "--help" || option == "-h") return SHelp{};
    if (option == "--scenario" || option == "--check") {
      options.checkOnly = option == "--check";
      if (!reader.Values(options.scenarios)) return SUsageError{option + " needs a file"};
      continue;
    }
    const auto switched = kSwitches.find(option);
    if (switched != kSwitches.end()) {
      switched->second(options);
      continue;
    }
    const auto valued = kValues.find(option);
    if (valued == kValues.end()) {
      return SUsageError{fmt::format("\"{}\" is not an option{}", option, Hint(option, Known()))};
    }
    if (!reader.Value(value)) return SUsageError{option + " needs a value"};
    if (const auto expected = valued->second(options, value); !expected.empty()) {
      return SUsageError{fmt::format("{}: \"{}\" is not {}", option, value, expected)};
    }
  }
  if (!options.junit.empty() && options.scenarios.empty()) {
    return SUsageError{"--junit needs a scenario; --scenario FILE"};
  }
  return options;
}

std::string HelpText() {
  std::string text = kUsage;
  for (const auto& kind : StepKinds()) {
    text += fmt::format("  {}\n      {}\n", kind.syntax, kind.help);
  }
  return text + kRest;
}
