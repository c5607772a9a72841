#include <fmt/format.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <variant>
#include <vector>

#include "virtualcharger/desk/rundesk.h"
#include "virtualcharger/peers/peerprocess.h"
#include "virtualcharger/scenario/childprocess.h"
#include "virtualcharger/scenario/options.h"
#include "virtualcharger/scenario/run.h"

int main(int argumentCount, char* arguments[]) {
  const std::filesystem::path program = ThisProgram();
  const auto options = ParseOptions(
      std::vector<std::string>(arguments + 1, arguments + argumentCount), program.parent_path());
  if (const auto* peer = std::get_if<SPeerSettings>(&options)) return RunPeer(*peer, 0);
  if (const auto* run = std::get_if<SRunOptions>(&options)) {
    return run->scenarios.empty() ? RunDesk(*run) : Run(*run);
  }
  if (const auto* error = std::get_if<SUsageError>(&options)) {
    fmt::print(stderr, "virtual-charger: {}\nTry \"virtual-charger --help\".\n", error->text);
    return static_cast<int>(EExit::Usage);
  }
  fmt::print("{}", HelpText());
  return 0;
}
