#include "virtualcharger/scenario/steptable.h"

#include <fmt/format.h>

#include <algorithm>

#include "utils/words.h"
#include "virtualcharger/scenario/changesteps.h"
#include "virtualcharger/scenario/expectsteps.h"

namespace {

StepAction ParseMark(CArguments& arguments) {
  arguments.End();
  return [](IObserver& observer) {
    observer.Mark();
    return std::string();
  };
}

StepAction ParseWait(CArguments& arguments) {
  const auto time = arguments.Time();
  arguments.End();
  return [=](IObserver& observer) {
    observer.Wait(time);
    return std::string();
  };
}

StepAction ParseSay(CArguments& arguments) {
  while (!arguments.IsAtEnd()) arguments.Word("");
  return [](IBench&) { return Done(); };
}

// Where the way goes on is the player's matter.
StepAction ParseEnd(CArguments& arguments) {
  arguments.End();
  return ParseSay(arguments);
}

StepAction ParseRepeat(CArguments& arguments) {
  arguments.Number("a number of rounds", 1, 10'000);
  return ParseEnd(arguments);
}

bool Begins(const std::vector<std::string>& words, std::string_view kind) {
  const auto own = SplitWords(kind);
  return own.size() <= words.size() && std::equal(own.begin(), own.end(), words.begin());
}

}  // namespace

const std::vector<SStepKind>& StepKinds() {
  // clang-format off
  static const std::vector<SStepKind> kinds{
      {"disable", "disable [rejected]",
       "the board controller disables the daemon, which takes it and reports its next state",
       "disable", &ParseRequest<ERequest::Disable>},
      {"enable", "enable [rejected]",
       "the same to enable it; rejected: its verdict must be that this is not possible now",
       "enable rejected", &ParseRequest<ERequest::Enable>},
      {"connector", "connector STATE",
       "the session manager reports this state, by its name or any number",
       "connector suspended-by-car", &ParseConnector},
      {"card", "card accepted|refused|swiped [rejected]",
       "the card reader's part: a card was accepted, refused or only seen",
       "card accepted", &ParseCard},
      {"identify", "identify [rejected]",
       "somebody asks which charger this is",
       "identify", &ParseIdentify},
      {"error", "error NUMBER|NAME on|off",
       "the diagnostics service reports that this error or warning begins or ends",
       "error 1004 on", &ParseError},
      {"light", "light LUX",
       "the light around the charger; 25 and less is night, 667 and more full day",
       "light 345.8", &ParseLight},
      {"set", "set KEY VALUE",
       "the store's key gets this value: true, false, a whole number or a text",
       "set HmiLedIntensityManual 40", &ParseSet},
      {"unset", "unset KEY",
       "the key is taken out of the store",
       "unset HmiLedIntensityMode", &ParseUnset},
      {"meter", "meter accepts|refuses",
       "what the meter does with a new brightness of its display",
       "meter refuses", &ParseMeter},
      {"log-level", "log-level LEVEL",
       "the daemon logs this level and what is more serious, until it is started again",
       "log-level debug", &ParseLogLevel},
      {"expect state", "expect state NAME [within TIME]",
       "the state that the daemon reported last; within: so soon after the last change began",
       "expect state enabled", &ParseExpectState},
      {"expect alive", "expect alive",
       "the daemon says once more that it is alive",
       "expect alive", &ParseExpectAlive},
      {"expect lamp", "expect lamp off|COLOUR MODE [within TIME]",
       "the lamp shows this light",
       "expect lamp blue pulsating within 1s", &ParseExpectLamp},
      {"expect brightness", "expect brightness PERCENT [within TIME]",
       "the upper end of the range of the channels that are lit",
       "expect brightness 76", &ParseExpectPercent<&IObserver::ExpectBrightness>},
      {"expect display", "expect display PERCENT [within TIME]",
       "the brightness that the meter's display was set to last",
       "expect display 100", &ParseExpectPercent<&IObserver::ExpectDisplay>},
      {"expect signal", "expect signal \"NAME\" TEXT [within TIME]",
       "the last value of this signal that diagnostics got",
       "expect signal \"LED state\" Blue/Pulsating", &ParseExpectSignal},
      {"expect attribute", "expect attribute DEVICE ATTRIBUTE \"TEXT\"",
       "what the attribute holds",
       "expect attribute beeper volume 4", &ParseExpectAttribute},
      {"expect report", "expect report NAME",
       "the next state that the daemon reports since the mark, a repeated one too",
       "expect report disabled", &ParseExpectReport},
      {"expect no report", "expect no report",
       "no further report since the mark",
       "expect no report", &ParseExpectNoReport},
      {"expect log", "expect log LEVEL|any \"TEXT\" [within TIME]",
       "a line of the daemon's log since the mark that contains the text, at this level",
       "expect log warning \"Unexpected connector state\"", &ParseExpectLog},
      {"expect no log", "expect no log LEVEL [\"TEXT\"]",
       "no other line that contains the text since the mark, at this level or a more serious one",
       "expect no log warning", &ParseExpectNoLog},
      {"expect beep", "expect beep [HZ] [for TIME to TIME]",
       "the next beep since the mark, from its begin to its end, of this pitch and length",
       "expect beep 4004 for 250ms to 500ms", &ParseExpectBeep},
      {"expect no beep", "expect no beep",
       "no further tone since the mark",
       "expect no beep", &ParseExpectNoBeep},
      {"expect written", "expect written CHANNEL ATTRIBUTE \"TEXT\"|nothing",
       "the next write to the lamp since the mark, exactly; or that there is none",
       "expect written blue pattern \"1000 2500 0 2500 \"", &ParseExpectWritten},
      {"mark", "mark",
       "only what is written, heard, reported and logged from here on is looked at",
       "mark", &ParseMark},
      {"interrupt", "interrupt daemon",
       "SIGINT: it ends with status 0 and leaves no socket and no tone",
       "interrupt daemon", &ParseInterrupt},
      {"kill", "kill PROCESS",
       "the process ends at once (SIGKILL)",
       "kill session-manager", &ParseControl<EProcessAction::Kill>},
      {"stop", "stop PROCESS",
       "the process is asked to end, and must end orderly; the daemon as by \"interrupt\"",
       "stop daemon", &ParseControl<EProcessAction::Stop>},
      {"start", "start PROCESS",
       "the process that was killed or stopped runs again and serves",
       "start session-manager", &ParseControl<EProcessAction::Start>},
      {"freeze", "freeze PROCESS",
       "the process stands still (SIGSTOP) and keeps its connections",
       "freeze diagnostics", &ParseControl<EProcessAction::Freeze>},
      {"thaw", "thaw PROCESS",
       "the frozen process goes on",
       "thaw diagnostics", &ParseControl<EProcessAction::Thaw>},
      {"fault", "fault DEVICE|all ATTRIBUTE|all NAME [TIME|\"TEXT\"] [times N]",
       "the hardware fails: by an error such as EIO, slow, short, garbage, frozen or vanished",
       "fault green pattern EIO times 2", &ParseFault},
      {"heal", "heal [DEVICE|all ATTRIBUTE|all]",
       "the fault that was set at exactly this place is gone; without a place: all faults",
       "heal green pattern", &ParseHeal},
      {"repeat", "repeat N",
       "the steps up to the matching \"end\" are done N times",
       "repeat 3", &ParseRepeat},
      {"end", "end",
       "the end of what is repeated",
       "end", &ParseEnd},
      {"wait", "wait TIME",
       "time to look at the lamp; expectations need none",
       "wait 300ms", &ParseWait},
      {"say", "say TEXT",
       "a line in the transcript",
       "say A car is plugged in", &ParseSay},
  };
  // clang-format on
  return kinds;
}

const std::vector<std::string>& ProcessNames() {
  static const std::vector<std::string> names{"daemon", "session-manager", "diagnostics",
                                              "board-controller", "meter"};
  return names;
}

StepAction ParseStep(const std::vector<std::string>& words) {
  std::vector<std::string> known;
  for (const auto& kind : StepKinds()) {
    if (Begins(words, kind.word)) {
      const auto own = static_cast<std::ptrdiff_t>(SplitWords(kind.word).size());
      CArguments arguments({words.begin() + own, words.end()});
      try {
        return kind.parse(arguments);
      } catch (const CParseError& error) {
        throw CParseError(fmt::format("{}; expected: {}", error.what(), kind.syntax));
      }
    }
    known.emplace_back(kind.word);
  }
  auto word = words.front();
  if (word == "expect") {
    std::erase_if(known, [](const auto& name) { return !name.starts_with("expect"); });
    if (words.size() > 1) word += ' ' + words[1];
  } else {
    known.emplace_back("expect");
  }
  constexpr std::size_t kFew = 5;
  const auto hint = Hint(word, known);
  throw CParseError(fmt::format(
      "\"{}\" is not a step{}", word,
      hint.empty() ? fmt::format("; the nearest are: {}; virtual-charger --help lists all",
                                 fmt::join(Nearest(word, known, kFew), ", "))
                   : hint));
}
