// The command line of virtual-charger.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "virtualcharger/hardware/chargerhardware.h"
#include "virtualcharger/peers/peerprocess.h"

struct SRunOptions {
  std::vector<std::string> scenarios;  // none: a charger with a page
  bool checkOnly = false;
  std::string junit;     // path; empty: none
  bool asChild = false;  // of a batch
  std::string daemon;
  CChargerHardware::SSettings hardware;
  bool showLog = false;
  bool keepRoot = false;
  // Of a charger with a page.
  std::string name;  // of the charger with the page; empty for the first free one
  std::optional<std::uint16_t> port;
  bool openPage = false;
};

struct SHelp {};
struct SUsageError {
  std::string text;
};

using Options = std::variant<SRunOptions, SPeerSettings, SHelp, SUsageError>;

// The arguments without the program's name. The daemon is looked for beside this program unless the
// arguments say otherwise.
Options ParseOptions(const std::vector<std::string>& arguments, const std::string& programFolder);

// What --help prints.
std::string HelpText();
