#include "virtualcharger/scenario/options.h"

#include <fmt/format.h>

#include "utils/words.h"
#include "virtualcharger/scenario/steptable.h"

namespace {

constexpr auto kUsage = R"(usage: virtual-charger --scenario FILE... [OPTION]...
       virtual-charger --check FILE...

Runs the feedback daemon in a charger that is made of software: lamp, light sensor and beeper as
the kernel would offer them, a board controller, a session manager, a diagnostics service and a
meter. A scenario tells what happens and what is expected; nothing on this machine is changed.

options:
  --scenario FILE  run the steps of this file; several files one after the other, each in a new
                   charger
  --check FILE     only say whether the file's steps are understood
  --junit FILE     write what came out for CI, in JUnit's format: a suite for each scenario, a test
                   case for each "say"
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

}  // namespace

Options ParseOptions(const std::vector<std::string>& arguments, const std::string& programFolder) {
  static const std::vector<std::string> known{"--scenario", "--check", "--junit",
                                              "--daemon",   "--hz",    "--quick-sensor",
                                              "--log",      "--keep",  "--help"};
  SRunOptions options;
  options.daemon = programFolder + "/feedback";
  CReader reader(arguments);
  std::string option;
  std::string value;
  while (reader.Next(option)) {
    if (option == "--peer") return ParsePeer(reader);
    if (option == "--help" || option == "-h") return SHelp{};
    if (option == "--quick-sensor") {
      options.hardware.quickSensor = true;
    } else if (option == "--log") {
      options.showLog = true;
    } else if (option == "--keep") {
      options.keepRoot = true;
    } else if (option == "--suite") {
      options.asChild = true;
    } else if (option == "--scenario" || option == "--check") {
      options.checkOnly = option == "--check";
      if (!reader.Values(options.scenarios)) return SUsageError{option + " needs a file"};
    } else if (option != "--junit" && option != "--daemon" && option != "--hz") {
      return SUsageError{fmt::format("\"{}\" is not an option{}", option, Hint(option, known))};
    } else if (!reader.Value(value)) {
      return SUsageError{option + " needs a value"};
    } else if (option == "--daemon") {
      options.daemon = value;
    } else if (option == "--hz") {
      const auto hz = Number(value, 1, kMostHz);
      if (!hz) {
        return SUsageError{
            fmt::format("--hz: \"{}\" is not a number from 1 to {}", value, kMostHz)};
      }
      options.hardware.hz = *hz;
    } else {
      options.junit = value;
    }
  }
  if (options.scenarios.empty()) return SUsageError{"no scenario; --scenario FILE or --check FILE"};
  return options;
}

std::string HelpText() {
  std::string text = kUsage;
  for (const auto& kind : StepKinds()) {
    text += fmt::format("  {}\n      {}\n", kind.syntax, kind.help);
  }
  return text + kRest;
}
