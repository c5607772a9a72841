// The command line of feedbackctl: what a command looks like, and how one is read from arguments.
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <ostream>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

// Exit statuses, also of a command's run.
inline constexpr int kDone = 0;
inline constexpr int kFailed = 1;
inline constexpr int kUsage = 2;

// What a command writes to and is ended by.
struct CTool {
  std::ostream& out;
  std::ostream& err;
  // Waits that long at most; true when the user wants an end. Called before a command that waits
  // for it starts any thread.
  std::function<bool(std::chrono::milliseconds)> isInterrupted;
  // The width of the terminal that the output goes to; 0 where it is none, or one that cannot move
  // its cursor.
  std::function<int()> columns = [] { return 0; };
  bool hasColours = false;
};

struct CCommand;

// A command with what stood behind it; its number of arguments and its options are right.
struct CInvocation {
  const CCommand* command = nullptr;
  std::vector<std::string> arguments;
  std::map<std::string, std::string, std::less<>> options;  // "--json"; empty without a value

  bool Has(std::string_view option) const { return options.contains(option); }
  // The option's value, or the default where it was not given.
  std::string Option(std::string_view option, std::string_view defaultValue) const;

  // The store of the charger that is meant: below "/" or what --root says, or that of a virtual
  // charger. Throws std::runtime_error where no charger of that name runs.
  std::string Store() const;
};

struct CCommand {
  std::string_view name;
  std::string_view arguments;             // "KEY VALUE"; in brackets what may be left out
  std::vector<std::string_view> options;  // besides those of every command
  std::string_view summary;
  std::string (*details)();  // the rest of its help, with examples
  // Throws CUsageError for arguments that make no sense, another std::exception where it fails.
  int (*run)(const CInvocation& invocation, const CTool& tool);
};

class CUsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

std::span<const CCommand> Commands();

struct COption {
  std::string_view name;
  std::string_view value;  // its name; empty where the option has none
  std::string_view meaning;
};

// Of all commands.
std::span<const COption> Options();

// A command's own and those of every command.
std::vector<std::string_view> OptionsOf(const CCommand& command);

// The names of a command's arguments, with the brackets of those that may be left out.
std::vector<std::string> ArgumentsOf(const CCommand& command);

// Runs the command that the arguments (without the program's name) ask for, and tells what went
// wrong and what to do about it. Returns the exit status.
int RunTool(const std::vector<std::string>& arguments, const CTool& tool);
