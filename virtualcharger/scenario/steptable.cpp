#include "virtualcharger/scenario/steptable.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>

#include "utils/signalcatalogue.h"
#include "virtualcharger/scenario/names.h"

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kDefaultDelay{500};
constexpr auto kAll = "all";

bool IsNumber(std::string_view word) {
  return !word.empty() && std::all_of(word.begin(), word.end(), [](unsigned char letter) {
    return std::isdigit(letter) != 0;
  });
}

ICharger::Limit ParseWithin(CArguments& arguments) {
  const auto limit = arguments.Take("within") ? ICharger::Limit(arguments.Time()) : std::nullopt;
  arguments.End();
  return limit;
}

StepAction ParseConnector(CArguments& arguments) {
  const auto& states = ConnectorStates();
  const int state = IsNumber(arguments.Peek())
                        ? arguments.Number("a connector state", 0, 1'000'000)
                        : states.numbers[arguments.Choice("a connector state", states.names)];
  arguments.End();
  return [=](ICharger& charger) { return charger.SetConnector(state); };
}

StepAction ParseError(CArguments& arguments) {
  const auto& errors = Errors();
  const int identifier = IsNumber(arguments.Peek())
                             ? arguments.Number("an error", kFirstError, kLastError)
                             : errors.numbers[arguments.Choice("an error", errors.names)];
  const bool on = arguments.Choice("\"on\" or \"off\"", {"on", "off"}) == 0;
  arguments.End();
  return [=](ICharger& charger) { return charger.SetError(identifier, on); };
}

std::string Capitalised(std::string text) {
  text[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[0])));
  return text;
}

StepAction ParseExpectLamp(CArguments& arguments) {
  SLamp lamp{"", "Off"};
  if (!arguments.Take("off")) {
    lamp.colour = Capitalised(LampColours()[arguments.Choice("a colour", LampColours())]);
    lamp.mode = Capitalised(LampModes()[arguments.Choice("a mode", LampModes())]);
  }
  const auto within = ParseWithin(arguments);
  return [=](ICharger& charger) {
    charger.ExpectLamp(lamp, within);
    return std::string();
  };
}

StepAction ParseExpectSignal(CArguments& arguments) {
  std::vector<std::string> names;
  for (const auto& signal : AllSignals()) names.emplace_back(signal.name);
  const auto place = arguments.Choice("a signal of the catalogue", names);
  const int identifier = AllSignals()[place].identifier;
  const auto text = arguments.Word("the signal's value");
  const auto within = ParseWithin(arguments);
  return [=](ICharger& charger) {
    charger.ExpectSignal(identifier, text, within);
    return std::string();
  };
}

StepAction ParseExpectWritten(CArguments& arguments) {
  if (arguments.Take("nothing")) {
    arguments.End();
    return [](ICharger& charger) {
      charger.ExpectNoWrite();
      return std::string();
    };
  }
  const auto channel = Channels()[arguments.Choice("a channel (or \"nothing\")", Channels())];
  const auto attribute = Attributes()[arguments.Choice("an attribute", Attributes())];
  const auto text = arguments.Word("the text that is written");
  arguments.End();
  return [=](ICharger& charger) {
    charger.ExpectWrite(channel, attribute, text);
    return std::string();
  };
}

StepAction ParseMark(CArguments& arguments) {
  arguments.End();
  return [](ICharger& charger) {
    charger.Mark();
    return std::string();
  };
}

template <EProcessAction Action>
StepAction ParseControl(CArguments& arguments) {
  const auto process = ProcessNames()[arguments.Choice("a process", ProcessNames())];
  arguments.End();
  return [=](ICharger& charger) {
    charger.Control(Action, process);
    return std::string();
  };
}

// A choice of which "all" becomes the empty name.
std::string ParsePlace(CArguments& arguments, std::string_view expected,
                       const std::vector<std::string>& names) {
  return arguments.Take(kAll) ? std::string() : names[arguments.Choice(expected, names)];
}

StepAction ParseFault(CArguments& arguments) {
  static const std::vector<std::string> names{"EIO",  "EACCES", "ENOENT",  "EBUSY",   "EINVAL",
                                              "slow", "short",  "garbage", "vanished"};
  const auto channel = ParsePlace(arguments, "a channel (or \"all\")", Channels());
  const auto attribute = ParsePlace(arguments, "an attribute (or \"all\")", Attributes());
  const auto name = names[arguments.Choice("a fault", names)];
  auto fault = FaultNamed(name).value();
  fault.delay = kDefaultDelay;
  fault.text = "garbage";
  if (name == "slow" && !arguments.Peek().empty() && arguments.Peek() != "times") {
    fault.delay = arguments.Time();
  }
  if (arguments.Take("times")) {
    fault.writes = static_cast<unsigned>(arguments.Number("a number of writes", 1, 1'000'000));
  }
  arguments.End();
  return [=](ICharger& charger) {
    charger.SetFault(channel, attribute, fault);
    return std::string();
  };
}

StepAction ParseHeal(CArguments& arguments) {
  arguments.End();
  return [](ICharger& charger) {
    charger.Heal();
    return std::string();
  };
}

StepAction ParseWait(CArguments& arguments) {
  const auto time = arguments.Time();
  arguments.End();
  return [=](ICharger& charger) {
    charger.Wait(time);
    return std::string();
  };
}

StepAction ParseSay(CArguments& arguments) {
  while (!arguments.Peek().empty()) arguments.Word("");
  return [](ICharger&) { return std::string(); };
}

bool Begins(const std::vector<std::string>& words, std::string_view kind) {
  const auto own = SplitWords(kind);
  return own.size() <= words.size() && std::equal(own.begin(), own.end(), words.begin());
}

}  // namespace

const std::vector<SStepKind>& StepKinds() {
  // clang-format off
  static const std::vector<SStepKind> kinds{
      {"connector", "connector STATE",
       "the session manager reports this state, by its name or any number",
       "connector suspended-by-car", &ParseConnector},
      {"error", "error NUMBER|NAME on|off",
       "the diagnostics service reports that this error begins or ends",
       "error 1004 on", &ParseError},
      {"expect lamp", "expect lamp off|COLOUR MODE [within TIME]",
       "the lamp shows this light; within: so soon after the last change began",
       "expect lamp blue pulsating within 1s", &ParseExpectLamp},
      {"expect signal", "expect signal \"NAME\" TEXT [within TIME]",
       "the last value of this signal that diagnostics got; within: as above",
       "expect signal \"LED state\" Blue/Pulsating", &ParseExpectSignal},
      {"expect written", "expect written CHANNEL ATTRIBUTE \"TEXT\"|nothing",
       "the next write to the lamp since the mark, exactly; or that there is none",
       "expect written blue pattern \"1000 2500 0 2500 \"", &ParseExpectWritten},
      {"mark", "mark",
       "what is written from here on is compared by \"expect written\"",
       "mark", &ParseMark},
      {"kill", "kill PROCESS",
       "the process ends at once (SIGKILL): daemon, session-manager or diagnostics",
       "kill session-manager", &ParseControl<EProcessAction::Kill>},
      {"stop", "stop PROCESS",
       "the process is asked to end, and must end orderly",
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
      {"fault", "fault CHANNEL|all ATTRIBUTE|all NAME [TIME] [times N]",
       "the lamp's attribute fails: EIO EACCES ENOENT EBUSY EINVAL slow short garbage vanished",
       "fault green pattern EIO times 2", &ParseFault},
      {"heal", "heal",
       "no faults any more",
       "heal", &ParseHeal},
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
  static const std::vector<std::string> names{"daemon", "session-manager", "diagnostics"};
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
  if (word == "expect") word += ' ' + (words.size() > 1 ? words[1] : std::string());
  const auto hint = Hint(word, known);
  throw CParseError(fmt::format(
      "\"{}\" is not a step{}", word,
      hint.empty() ? fmt::format("; expected one of: {}", fmt::join(known, ", ")) : hint));
}
