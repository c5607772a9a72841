#include "virtualcharger/scenario/expectsteps.h"

#include <algorithm>
#include <cctype>

#include "utils/signalcatalogue.h"
#include "virtualcharger/scenario/daemonlog.h"
#include "virtualcharger/scenario/names.h"

namespace {

IObserver::Limit ParseWithin(CArguments& arguments) {
  const auto limit = arguments.Take("within") ? IObserver::Limit(arguments.Time()) : std::nullopt;
  arguments.End();
  return limit;
}

int ParseState(CArguments& arguments) {
  const auto& [names, numbers] = DaemonStates();
  return numbers[arguments.Choice("a state of the daemon", names)];
}

Log::ELogLevel ParseLevel(CArguments& arguments, std::string_view expected) {
  return static_cast<Log::ELogLevel>(arguments.Choice(expected, LogLevels()));
}

std::string Capitalised(std::string text) {
  text[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[0])));
  return text;
}

}  // namespace

StepAction ParseExpectState(CArguments& arguments) {
  const int state = ParseState(arguments);
  const auto within = ParseWithin(arguments);
  return [=](IObserver& observer) {
    observer.ExpectState(state, within);
    return std::string();
  };
}

StepAction ParseExpectAlive(CArguments& arguments) {
  arguments.End();
  return [](IObserver& observer) {
    observer.ExpectAlive();
    return std::string();
  };
}

StepAction ParseExpectLamp(CArguments& arguments) {
  SLamp lamp{"", "Off"};
  if (!arguments.Take("off")) {
    lamp.colour = Capitalised(LampColours()[arguments.Choice("a colour", LampColours())]);
    lamp.mode = Capitalised(LampModes()[arguments.Choice("a mode", LampModes())]);
  }
  const auto within = ParseWithin(arguments);
  return [=](IObserver& observer) {
    observer.ExpectLamp(lamp, within);
    return std::string();
  };
}

template <void (IObserver::*Expect)(int, IObserver::Limit)>
StepAction ParseExpectPercent(CArguments& arguments) {
  const int percent = arguments.Number("a percentage", 0, 100);
  const auto within = ParseWithin(arguments);
  return [=](IObserver& observer) {
    (observer.*Expect)(percent, within);
    return std::string();
  };
}

template StepAction ParseExpectPercent<&IObserver::ExpectBrightness>(CArguments& arguments);
template StepAction ParseExpectPercent<&IObserver::ExpectDisplay>(CArguments& arguments);

StepAction ParseExpectSignal(CArguments& arguments) {
  std::vector<std::string> names;
  for (const auto& signal : AllSignals()) names.emplace_back(signal.name);
  const auto place = arguments.Choice("a signal of the catalogue", names);
  const int identifier = AllSignals()[place].identifier;
  const auto text = arguments.Word("the signal's value");
  const auto within = ParseWithin(arguments);
  return [=](IObserver& observer) {
    observer.ExpectSignal(identifier, text, within);
    return std::string();
  };
}

StepAction ParseExpectAttribute(CArguments& arguments) {
  const auto device = Devices()[arguments.Choice("a device", Devices())];
  const auto attribute =
      AttributesOf(device)[arguments.Choice("an attribute", AttributesOf(device))];
  const auto text = arguments.Word("the text that it holds");
  arguments.End();
  return [=](IObserver& observer) {
    observer.ExpectAttribute(device, attribute, text);
    return std::string();
  };
}

StepAction ParseExpectReport(CArguments& arguments) {
  const int state = ParseState(arguments);
  arguments.End();
  return [=](IObserver& observer) {
    observer.ExpectReport(state);
    return std::string();
  };
}

StepAction ParseExpectNoReport(CArguments& arguments) {
  arguments.End();
  return [](IObserver& observer) {
    observer.ExpectNoReport();
    return std::string();
  };
}

StepAction ParseExpectLog(CArguments& arguments) {
  std::optional<Log::ELogLevel> level;
  if (!arguments.Take("any")) level = ParseLevel(arguments, "a level (or \"any\")");
  const auto text = arguments.Word("the text that the line contains");
  const auto within = ParseWithin(arguments);
  return [=](IObserver& observer) {
    observer.ExpectLog(level, text, within);
    return std::string();
  };
}

StepAction ParseExpectNoLog(CArguments& arguments) {
  const auto level = ParseLevel(arguments, "a level");
  const auto text = arguments.IsAtEnd() ? "" : arguments.Word("");
  arguments.End();
  return [=](IObserver& observer) {
    observer.ExpectNoLog(level, text);
    return std::string();
  };
}

StepAction ParseExpectBeep(CArguments& arguments) {
  SBeepBounds bounds;
  if (!arguments.IsAtEnd() && arguments.Peek() != "for") {
    bounds.hz = arguments.Number("a pitch in Hz", 20, 20'000);
  }
  if (arguments.Take("for")) {
    const auto shortest = arguments.Time();
    arguments.Choice("\"to\"", {"to"});
    bounds.length = {shortest, arguments.Time()};
  }
  arguments.End();
  return [=](IObserver& observer) { return observer.ExpectBeep(bounds); };
}

StepAction ParseExpectNoBeep(CArguments& arguments) {
  arguments.End();
  return [](IObserver& observer) {
    observer.ExpectNoBeep();
    return std::string();
  };
}

StepAction ParseExpectWritten(CArguments& arguments) {
  if (arguments.Take("nothing")) {
    arguments.End();
    return [](IObserver& observer) {
      observer.ExpectNoWrite();
      return std::string();
    };
  }
  const auto channel = Channels()[arguments.Choice("a channel (or \"nothing\")", Channels())];
  const auto attribute =
      AttributesOf(channel)[arguments.Choice("an attribute", AttributesOf(channel))];
  const auto text = arguments.Word("the text that is written");
  arguments.End();
  return [=](IObserver& observer) {
    observer.ExpectWrite(channel, attribute, text);
    return std::string();
  };
}
