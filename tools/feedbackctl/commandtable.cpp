#include <fmt/format.h>
#include <fmt/ranges.h>

#include <array>

#include "tools/feedbackctl/commands.h"
#include "tools/feedbackctl/settingtext.h"
#include "tools/feedbackctl/words.h"

namespace {

std::string StatusDetails() {
  return R"(The daemon's lifecycle state and log level, what its lamp shows as far as diagnostics knows, and
which of the charger's services answer. Exit status 1 when the daemon does not.

example:
  feedbackctl status && echo "the daemon is up"
)";
}

std::string WatchDetails() {
  return R"(One line for each state report and alive message and each change of what the lamp shows, until
Ctrl-C. It may be started before the daemon, and goes on when the daemon comes back. A line of
--json is an object with "time" (UTC), "kind" (state, alive or lamp) and "value".

examples:
  feedbackctl watch
  feedbackctl watch --json | jq 'select(.kind == "lamp").value'
)";
}

std::string EnableDetails() {
  return R"(Asks as the board controller does, and tells whether the daemon took the request. One that has just
started is Uninitialized and refuses: disable it first. One in FatalError takes the request and
stays as it is; "feedbackctl status" shows it.

example:
  feedbackctl disable && feedbackctl enable
)";
}

std::string DisableDetails() {
  return R"(Asks as the board controller does, and tells whether the daemon took the request. The first request
after its start initialises it. One in FatalError takes the request and stays as it is;
"feedbackctl status" shows it.

example:
  feedbackctl disable
)";
}

std::string TriggerDetails() {
  return fmt::format(
      R"(Asks for feedback to the person at the charger. Only an enabled daemon takes it.
EVENT is {}.

examples:
  feedbackctl trigger identify
  feedbackctl trigger auth-failure --instance 1
)",
      fmt::join(kFeedbackEvents, ", "));
}

std::string LogLevelDetails() {
  return fmt::format(R"(Without LEVEL, shows the daemon's log level. LEVEL is {}.
The level counts until the daemon ends.

examples:
  feedbackctl log-level
  feedbackctl log-level debug
)",
                     fmt::join(kLogLevels, ", "));
}

std::string GetDetails() {
  return "Reads the section \"settings\" of the store; the daemon need not run. Without KEY, shows "
         "all\n"
         "settings.\n\nsettings:\n" +
         SettingLines("settings") +
         "\nexamples:\n  feedbackctl get\n  feedbackctl get HmiBuzzerVolume\n";
}

std::string SetDetails() {
  return "Writes one key of the section \"settings\" of the store; a running daemon follows at "
         "once unless\n"
         "the setting is read at start. The value null takes the key out of the store, so that its "
         "default\n"
         "counts again.\n\nsettings:\n" +
         SettingLines("settings") +
         "\nexamples:\n  feedbackctl set HmiBuzzerVolume 2\n"
         "  feedbackctl set HmiLedIntensityMode Auto\n"
         "  feedbackctl set HmiLedIntensityManual null\n";
}

std::string SignalsDetails() {
  return R"(All diagnostics signals of the charger, with type, default, unit and category.

examples:
  feedbackctl signals | grep -i lamp
  feedbackctl signals --json | jq '.[] | select(.identifier == 1004)'
)";
}

std::string CheckConfigDetails() {
  return "Names every problem of a store with section, key, what was found and what was expected. "
         "Exit\n"
         "status 1 when there is one.\n\nsection \"settings\":\n" +
         SettingLines("settings") + "section \"hwinfo\":\n" + SettingLines("hwinfo") +
         "\nexample:\n  feedbackctl check-config /etc/ovra.json\n";
}

}  // namespace

std::span<const CCommand> Commands() {
  // clang-format off
  static const auto commands = std::to_array<CCommand>({
      {"status",       "",          {},             "Show the daemon's state and which services answer",     &StatusDetails,      &RunStatus},
      {"watch",        "",          {"--json"},     "Print states, alive messages and the lamp's changes",   &WatchDetails,       &RunWatch},
      {"enable",       "",          {},             "Enable the daemon",                                     &EnableDetails,      &RunEnable},
      {"disable",      "",          {},             "Disable the daemon",                                    &DisableDetails,     &RunDisable},
      {"trigger",      "EVENT",     {"--instance"}, "Ask for a feedback event",                              &TriggerDetails,     &RunTrigger},
      {"log-level",    "[LEVEL]",   {},             "Show or set the daemon's log level",                    &LogLevelDetails,    &RunLogLevel},
      {"get",          "[KEY]",     {},             "Show settings",                                         &GetDetails,         &RunGet},
      {"set",          "KEY VALUE", {"--force"},    "Change a setting",                                      &SetDetails,         &RunSet},
      {"signals",      "",          {"--json"},     "List the charger's diagnostics signals",                &SignalsDetails,     &RunSignals},
      {"check-config", "FILE",      {},             "Check a store",                                         &CheckConfigDetails, &RunCheckConfig},
  });
  // clang-format on
  return commands;
}
