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
  return R"(What changes: the daemon's coming and going, its state, the lamp and the buzzer as diagnostics knows
them, until Ctrl-C. It may be started before the daemon, and follows it when it comes back. Lamp,
buzzer and light are asked for four times a second, because diagnostics tells nobody when they
change: what lasts less may be missed.

On a terminal the present values stay in a block at the end, with alive messages counted and the
light. Elsewhere, or where TERM is "dumb", there is one line a change. NO_COLOR in the environment
takes the colours out. A line of --json is an object with "time" (UTC), "kind" (daemon, state, lamp,
buzzer, light or alive) and "value".

examples:
  feedbackctl watch
  feedbackctl watch --for 10s
  feedbackctl watch --json | jq 'select(.kind == "lamp").value'
)";
}

std::string LampDetails() {
  return R"(What the daemon reported last about its lamp, and what asks for which light: a feedback event goes
before the oldest error, that before the disabled lamp, and that before the connector's state. The
one that wins is marked. Where the report is something else, a note says what may have happened:
the daemon hears errors only while it is Enabled, and the connector's state "changing" leaves the
lamp as it is. Exit status 1 when diagnostics does not answer.

examples:
  feedbackctl lamp
  feedbackctl lamp --json | jq .winner
)";
}

std::string DoctorDetails() {
  return R"(Looks at the store, the sockets and who answers, the daemon's state and log level, and the files of
lamp, light sensor and buzzer as the daemon sees them. One line a check: ok, warning or failed, and
what to do. Exit status 1 when one failed.

examples:
  feedbackctl doctor
  feedbackctl doctor --json | jq '.[] | select(.verdict != "ok")'
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
      fmt::join(KnownWords("EVENT"), ", "));
}

std::string LogLevelDetails() {
  return fmt::format(R"(Without LEVEL, shows the daemon's log level. LEVEL is {}.
The level counts until the daemon ends.

examples:
  feedbackctl log-level
  feedbackctl log-level debug
)",
                     fmt::join(KnownWords("LEVEL"), ", "));
}

std::string GetDetails() {
  return "Reads the section \"settings\" of the store; the daemon need not run. Without KEY, shows "
         "all\n"
         "settings.\n\nsettings:\n" +
         SettingLines(Settings::kSection) +
         "\nexamples:\n  feedbackctl get\n  feedbackctl get HmiBuzzerVolume\n";
}

std::string SetDetails() {
  return "Writes one key of the section \"settings\" of the store; a running daemon follows at "
         "once unless\n"
         "the setting is read at start. The value null takes the key out of the store, so that its "
         "default\n"
         "counts again.\n\nsettings:\n" +
         SettingLines(Settings::kSection) +
         "\nexamples:\n  feedbackctl set HmiBuzzerVolume 2\n"
         "  feedbackctl set HmiLedIntensityMode Auto\n"
         "  feedbackctl set HmiLedIntensityManual null\n";
}

std::string SignalsDetails() {
  return R"(The diagnostics signals of the charger, with type, default, unit and category; or the one that SIGNAL
names or numbers.

examples:
  feedbackctl signals | grep -i lamp
  feedbackctl signals ChargeControlCpLowError
  feedbackctl signals --json | jq '.[] | select(.identifier == 1004)'
)";
}

std::string ChargersDetails() {
  return R"(One line each: the name for --charger, the page's address and the store. The address steers the
charger. With one named "desk", "feedbackctl status --charger desk" shows its daemon.

example:
  feedbackctl chargers
)";
}

std::string CompletionDetails() {
  return R"(A script that completes commands, options, settings, events, log levels and signals. SHELL is bash
or zsh. An installed feedbackctl brings it along; this is for a built one.

examples:
  source <(feedbackctl completion bash)
  feedbackctl completion zsh > _feedbackctl
)";
}

std::string CheckConfigDetails() {
  return "Names every problem of a store with section, key, what was found and what was expected. "
         "Exit\n"
         "status 1 when there is one.\n\nsection \"settings\":\n" +
         SettingLines(Settings::kSection) + "section \"hwinfo\":\n" +
         SettingLines(Settings::kHardwareSection) +
         "\nexample:\n  feedbackctl check-config /etc/ovra.json\n";
}

}  // namespace

std::span<const CCommand> Commands() {
  // clang-format off
  static const auto commands = std::to_array<CCommand>({
      {"status",       "",          {"--json"},          "Show the daemon's state and which services answer",     &StatusDetails,      &RunStatus},
      {"watch",        "",          {"--for", "--json"}, "Follow the daemon, its lamp and its buzzer",            &WatchDetails,       &RunWatch},
      {"lamp",         "",          {"--json"},          "Explain what the lamp shows",                           &LampDetails,        &RunLamp},
      {"doctor",       "",          {"--json"},          "Check everything that the daemon needs",                &DoctorDetails,      &RunDoctor},
      {"enable",       "",          {},                  "Enable the daemon",                                     &EnableDetails,      &RunEnable},
      {"disable",      "",          {},                  "Disable the daemon",                                    &DisableDetails,     &RunDisable},
      {"trigger",      "EVENT",     {"--instance"},      "Ask for a feedback event",                              &TriggerDetails,     &RunTrigger},
      {"log-level",    "[LEVEL]",   {},                  "Show or set the daemon's log level",                    &LogLevelDetails,    &RunLogLevel},
      {"get",          "[KEY]",     {},                  "Show settings",                                         &GetDetails,         &RunGet},
      {"set",          "KEY VALUE", {"--force"},         "Change a setting",                                      &SetDetails,         &RunSet},
      {"signals",      "[SIGNAL]",  {"--json"},          "List the charger's diagnostics signals",                &SignalsDetails,     &RunSignals},
      {"check-config", "FILE",      {},                  "Check a store",                                         &CheckConfigDetails, &RunCheckConfig},
      {"chargers",     "",          {"--json"},          "List the virtual chargers that run",                    &ChargersDetails,    &RunChargers},
      {"completion",   "SHELL",     {},                  "Print a script for the shell's completion",             &CompletionDetails,  &RunCompletion},
  });
  // clang-format on
  return commands;
}
