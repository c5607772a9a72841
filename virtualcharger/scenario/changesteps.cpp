#include "virtualcharger/scenario/changesteps.h"

#include <algorithm>
#include <cctype>

#include "platform/ipc/feedback.pb.h"
#include "utils/words.h"
#include "virtualcharger/scenario/daemonlog.h"
#include "virtualcharger/scenario/names.h"

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kDefaultDelay{500};
constexpr auto kAll = "all";

constexpr double kBrightest = 1'000'000;  // lux

bool IsNumber(std::string_view word) {
  return !word.empty() && std::all_of(word.begin(), word.end(), [](unsigned char letter) {
    return std::isdigit(letter) != 0;
  });
}

// A step that needs a verdict ends with "rejected" where that is expected.
bool ParseAccepted(CArguments& arguments) {
  const bool rejected = arguments.Take("rejected");
  arguments.End();
  return !rejected;
}

StepAction ParseTrigger(CArguments& arguments, int event) {
  const bool accepted = ParseAccepted(arguments);
  return [=](IBench& bench) { return bench.Trigger(event, accepted); };
}

std::string ParseKey(CArguments& arguments) {
  return StoreKeys()[arguments.Choice("a key of the store", StoreKeys())];
}

struct SPlace {
  std::string device;
  std::string attribute;
};

// A choice of which "all" becomes the empty name.
std::string ParseOneOrAll(CArguments& arguments, std::string_view expected,
                          const std::vector<std::string>& names) {
  return arguments.Take(kAll) ? std::string() : names[arguments.Choice(expected, names)];
}

SPlace ParsePlace(CArguments& arguments) {
  const auto device = ParseOneOrAll(arguments, "a device (or \"all\")", Devices());
  return {device, ParseOneOrAll(arguments, "an attribute (or \"all\")", AttributesOf(device))};
}

}  // namespace

template <ERequest Asked>
StepAction ParseRequest(CArguments& arguments) {
  const bool accepted = ParseAccepted(arguments);
  return [=](IBench& bench) { return bench.Request(Asked, accepted); };
}

StepAction ParseCard(CArguments& arguments) {
  static constexpr ipc::EFbEventType events[]{
      ipc::EFbEventTypeAuthSuccess, ipc::EFbEventTypeAuthFailure, ipc::EFbEventTypeTagSwipe};
  const auto choice =
      arguments.Choice("what happens to the card", {"accepted", "refused", "swiped"});
  return ParseTrigger(arguments, events[choice]);
}

StepAction ParseIdentify(CArguments& arguments) {
  return ParseTrigger(arguments, ipc::EFbEventTypeIdentify);
}

StepAction ParseConnector(CArguments& arguments) {
  const auto& states = ConnectorStates();
  const int state = IsNumber(arguments.Peek())
                        ? arguments.Number("a connector state", 0, 1'000'000)
                        : states.numbers[arguments.Choice("a connector state", states.names)];
  arguments.End();
  return [=](IBench& bench) { return bench.SetConnector(state); };
}

StepAction ParseError(CArguments& arguments) {
  const auto& errors = Errors();
  const int identifier = IsNumber(arguments.Peek())
                             ? arguments.Number("an error", kFirstError, kLastWarning)
                             : errors.numbers[arguments.Choice("an error", errors.names)];
  const bool on = arguments.Choice("\"on\" or \"off\"", {"on", "off"}) == 0;
  arguments.End();
  return [=](IBench& bench) { return bench.SetError(identifier, on); };
}

StepAction ParseLight(CArguments& arguments) {
  const double lux = arguments.Decimal("an illuminance in lux", 0, kBrightest);
  arguments.End();
  return [=](IBench& bench) { return bench.SetLight(lux); };
}

StepAction ParseSet(CArguments& arguments) {
  const auto key = ParseKey(arguments);
  const auto value = StoredValue(arguments.Word("the new value"));
  arguments.End();
  return [=](IBench& bench) { return bench.SetStored(key, value); };
}

StepAction ParseUnset(CArguments& arguments) {
  const auto key = ParseKey(arguments);
  arguments.End();
  return [=](IBench& bench) { return bench.SetStored(key, Json::Value()); };
}

StepAction ParseMeter(CArguments& arguments) {
  const bool accepts = arguments.Choice("\"accepts\" or \"refuses\"", {"accepts", "refuses"}) == 0;
  arguments.End();
  return [=](IBench& bench) { return bench.SetMeter(accepts); };
}

StepAction ParseLogLevel(CArguments& arguments) {
  const auto level = static_cast<Log::ELogLevel>(arguments.Choice("a level", LogLevels()));
  arguments.End();
  return [=](IBench& bench) { return bench.SetLogLevel(level); };
}

template <EProcessAction Action>
StepAction ParseControl(CArguments& arguments) {
  const auto process = ProcessNames()[arguments.Choice("a process", ProcessNames())];
  arguments.End();
  return [=](IBench& bench) { return bench.Control(Action, process); };
}

StepAction ParseInterrupt(CArguments& arguments) {
  arguments.Choice("the daemon", {"daemon"});
  arguments.End();
  return [](IBench& bench) { return bench.Control(EProcessAction::Stop, "daemon"); };
}

StepAction ParseFault(CArguments& arguments) {
  const auto place = ParsePlace(arguments);
  const auto name = FaultNames()[arguments.Choice("a fault", FaultNames())];
  auto fault = FaultNamed(name).value();
  fault.delay = kDefaultDelay;
  fault.text = "garbage";
  const bool more = !arguments.IsAtEnd() && arguments.Peek() != "times";
  if (name == "slow" && more) fault.delay = arguments.Time();
  if (name == "garbage" && more) fault.text = arguments.Word("the text that reads give");
  if (arguments.Take("times")) {
    fault.writes = static_cast<unsigned>(arguments.Number("a number of writes", 1, 1'000'000));
  }
  arguments.End();
  return [=](IBench& bench) { return bench.SetFault(place.device, place.attribute, fault); };
}

StepAction ParseHeal(CArguments& arguments) {
  if (arguments.IsAtEnd()) return [](IBench& bench) { return bench.HealAll(); };
  const auto place = ParsePlace(arguments);
  arguments.End();
  return [=](IBench& bench) { return bench.Heal(place.device, place.attribute); };
}

template StepAction ParseRequest<ERequest::Disable>(CArguments& arguments);
template StepAction ParseRequest<ERequest::Enable>(CArguments& arguments);
template StepAction ParseControl<EProcessAction::Kill>(CArguments& arguments);
template StepAction ParseControl<EProcessAction::Stop>(CArguments& arguments);
template StepAction ParseControl<EProcessAction::Start>(CArguments& arguments);
template StepAction ParseControl<EProcessAction::Freeze>(CArguments& arguments);
template StepAction ParseControl<EProcessAction::Thaw>(CArguments& arguments);
