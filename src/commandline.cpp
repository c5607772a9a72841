#include "src/commandline.h"

#include <getopt.h>

#include <iostream>

#include "platform/log/log.h"

namespace {

constexpr option kLongOptions[] = {
    {"verbose", no_argument, nullptr, 'v'},
    {"quiet", no_argument, nullptr, 'q'},
    {"root", required_argument, nullptr, 'r'},
    {"help", no_argument, nullptr, 'h'},
    {nullptr, 0, nullptr, 0},
};

// Scripts know this text, the missing line end after the first option included.
void PrintUsage(const char* program, const std::string& root) {
  std::cout << "usage: " << program
            << " [OPTION]\n"
               "  -v, --verbose    increase verbosity"
               "  -q, --quiet      disable logging to console\n"
               "  -r, --root=PATH  set the root directory;\n"
               "                   defaults to '"
            << root
            << "'\n"
               "  -h, --help       show this help message and exit\n"
            << std::endl;
}

}  // namespace

std::optional<CommandLine> ParseCommandLine(int argumentCount, char* arguments[]) {
  CommandLine commandLine;
  Log::ELogLevel level = Log::ELogLevel::EInfo;
  for (;;) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): before any thread is started
    const int option = getopt_long(argumentCount, arguments, "hqsvr:", kLongOptions, nullptr);
    switch (option) {
      case -1:
        return commandLine;
      case 'v':
        level = Log::GetLowerLogLevel(level);
        Log::SetLogLevel(level);
        break;
      case 'q':
        Log::EnableConsoleLogging(false);
        break;
      case 'r':
        commandLine.root = optarg;
        break;
      default:  // -h, -s and whatever is unknown
        PrintUsage(arguments[0], commandLine.root);
        return std::nullopt;
    }
  }
}
