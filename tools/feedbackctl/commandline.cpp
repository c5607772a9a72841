#include "tools/feedbackctl/commandline.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <sstream>

#include "tools/feedbackctl/chargers.h"
#include "utils/words.h"

namespace {

constexpr auto kOptions = std::to_array<COption>({
    {"--root", "PATH", "the daemon's root directory, which holds etc/ovra.json (default: /)"},
    {"--charger", "NAME", "a virtual charger that runs on this machine (\"feedbackctl chargers\")"},
    {"--instance", "N", "the connector, or 0 for the whole charger (default: 0)"},
    {"--for", "TIME", "end after this time, such as 10s or 500ms"},
    {"--json", "", "for scripts: JSON"},
    {"--force", "", "also keys that the daemon does not know"},
    {"--help", "", "this text; behind a command, more about that command"},
});
constexpr auto kEverywhere = std::to_array<std::string_view>({"--root", "--charger", "--help"});

template <typename Named>
const Named& Find(std::span<const Named> all, std::string_view name, std::string_view what) {
  const auto found = std::ranges::find(all, name, &Named::name);
  if (found == all.end()) {
    std::vector<std::string> names;
    for (const auto& each : all) {
      names.emplace_back(each.name);
    }
    const auto hint = Hint(name, names);
    throw CUsageError(
        fmt::format("\"{}\" is not {}{}", name, what,
                    hint.empty() ? fmt::format("; expected {}", fmt::join(names, ", ")) : hint));
  }
  return *found;
}

const COption& FindOption(std::string_view name) {
  return Find(Options(), name, "an option");
}

const CCommand& FindCommand(std::string_view name) {
  return Find(Commands(), name, "a command");
}

std::string ValueOf(const COption& option) {
  return option.value.empty() ? "" : fmt::format(" {}", option.value);
}

std::string Synopsis(const CCommand& command) {
  std::string text(command.name);
  if (!command.arguments.empty()) {
    text += fmt::format(" {}", command.arguments);
  }
  for (const auto name : command.options) {
    text += fmt::format(" [{}{}]", name, ValueOf(FindOption(name)));
  }
  return text;
}

std::string OptionLines(std::span<const std::string_view> names) {
  std::string text;
  for (const auto name : names) {
    const COption& option = FindOption(name);
    text +=
        fmt::format("  {:<14}  {}\n", fmt::format("{}{}", name, ValueOf(option)), option.meaning);
  }
  return text;
}

std::string HelpText() {
  std::string text =
      "usage: feedbackctl [--root PATH | --charger NAME] COMMAND\n\n"
      "Shows and controls the user-feedback daemon over its local services.\n\ncommands:\n";
  for (const auto& command : Commands()) {
    text += fmt::format("  {:<36}  {}\n", Synopsis(command), command.summary);
  }
  return text + "\noptions:\n" + OptionLines(kEverywhere) +
         "\nexit status: 0 done, 1 refused or failed, 2 the command line is wrong\n"
         "examples:\n"
         "  feedbackctl status\n"
         "  feedbackctl --root /tmp/charger/ trigger identify\n"
         "  feedbackctl set --help\n";
}

std::string HelpText(const CCommand& command) {
  return fmt::format("usage: feedbackctl {}\n\n{}.\n\noptions:\n{}\n{}", Synopsis(command),
                     command.summary, OptionLines(OptionsOf(command)), command.details());
}

// The options may stand anywhere. A word that begins with one dash is a value, such as a number.
CInvocation Read(const std::vector<std::string>& words) {
  CInvocation invocation;
  for (auto word = words.begin(); word != words.end(); ++word) {
    if (word->starts_with("--") || *word == "-h") {
      const auto equals = std::min(word->find('='), word->size());
      const std::string name = *word == "-h" ? "--help" : word->substr(0, equals);
      const COption& option = FindOption(name);
      std::string value;
      if (equals < word->size()) {
        value = word->substr(equals + 1);
      } else if (!option.value.empty() && std::next(word) != words.end()) {
        value = *++word;
      }
      if (value.empty() == !option.value.empty()) {
        throw CUsageError(fmt::format("{} {}", name,
                                      option.value.empty()
                                          ? "takes no value"
                                          : fmt::format("needs a value: {}", option.value)));
      }
      invocation.options[name] = value;
    } else if (invocation.command == nullptr) {
      invocation.command = &FindCommand(*word);
    } else {
      invocation.arguments.push_back(*word);
    }
  }
  return invocation;
}

void Check(const CInvocation& invocation) {
  const CCommand& command = *invocation.command;
  for (const auto& [name, value] : invocation.options) {
    const auto options = OptionsOf(command);
    if (std::ranges::find(options, name) == options.end()) {
      throw CUsageError(fmt::format("{} is not an option of \"{}\"", name, command.name));
    }
  }
  if (invocation.Has("--root") && invocation.Has("--charger")) {
    throw CUsageError("--root and --charger cannot both say which charger is meant");
  }
  const auto names = ArgumentsOf(command);
  const auto count = invocation.arguments.size();
  if (count > names.size()) {
    throw CUsageError(fmt::format("\"{}\" is too much", invocation.arguments[names.size()]));
  }
  if (count < names.size() && !names[count].starts_with('[')) {
    throw CUsageError(fmt::format("{} is missing", names[count]));
  }
}

int Run(const CInvocation& invocation, const CTool& tool) {
  if (invocation.Has("--help")) {
    tool.out << (invocation.command ? HelpText(*invocation.command) : HelpText());
    return kDone;
  }
  if (invocation.command == nullptr) {
    throw CUsageError("no command");
  }
  Check(invocation);
  return invocation.command->run(invocation, tool);
}

}  // namespace

std::span<const COption> Options() {
  return kOptions;
}

std::vector<std::string_view> OptionsOf(const CCommand& command) {
  std::vector<std::string_view> options(command.options);
  options.insert(options.end(), kEverywhere.begin(), kEverywhere.end());
  return options;
}

std::vector<std::string> ArgumentsOf(const CCommand& command) {
  std::istringstream words{std::string(command.arguments)};
  return {std::istream_iterator<std::string>(words), {}};
}

std::string CInvocation::Option(std::string_view option, std::string_view defaultValue) const {
  const auto found = options.find(option);
  return std::string(found == options.end() ? defaultValue : found->second);
}

std::string CInvocation::Store() const {
  if (Has("--charger")) {
    return FindCharger(Option("--charger", "")).store;
  }
  const std::string root = Option("--root", "/");
  return root + (root.ends_with('/') ? "" : "/") + "etc/ovra.json";
}

int RunTool(const std::vector<std::string>& arguments, const CTool& tool) {
  CInvocation invocation;
  try {
    invocation = Read(arguments);
    const int status = Run(invocation, tool);
    if (!tool.out.flush()) {
      throw std::runtime_error("cannot write the output");
    }
    return status;
  } catch (const CUsageError& error) {
    const auto* command = invocation.command;
    tool.err << fmt::format(
        "feedbackctl: {}\nusage: feedbackctl {}\n\"feedbackctl {}\" tells more\n", error.what(),
        command ? Synopsis(*command) : "[--root PATH | --charger NAME] COMMAND",
        command ? fmt::format("{} --help", command->name) : "--help");
    return kUsage;
  } catch (const std::exception& error) {
    tool.err << "feedbackctl: " << error.what() << '\n';
    return kFailed;
  }
}
