#include "tools/feedbackctl/lampexplanation.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "utils/connectortables.h"
#include "utils/connectortext.h"
#include "utils/controltext.h"

namespace {

using SSource = SLampExplanation::SSource;

struct CEvent {
  std::string_view meaning;
  std::chrono::milliseconds displayTime;
};

// In the order of kEventLeds.
constexpr std::array<CEvent, kEventLeds.size()> kEvents{{
    {"card accepted", kAuthDisplayTime},
    {"card refused", kAuthDisplayTime},
    {"\"which charger is this?\", at full brightness", kIdentifyDisplayTime},
}};

// A report is on its way for that long at most, when all goes well.
constexpr std::chrono::milliseconds kOnItsWay{1000};

// Only events flash.
const CEvent* ReportedEvent(const SLampFacts& facts) {
  for (std::size_t event = 0; event < kEvents.size(); ++event) {
    if (facts.reported == LedStateText(kEventLeds.at(event))) {
      return &kEvents.at(event);
    }
  }
  return nullptr;
}

bool IsOver(const CEvent& event, const SLampFacts& facts) {
  return facts.reportedAge > event.displayTime + kOnItsWay;
}

bool IsEnabled(const SLampFacts& facts) {
  return facts.state == ipc::EStateEnabled && facts.installationComplete;
}

SSource Event(const SLampFacts& facts) {
  const CEvent* event = ReportedEvent(facts);
  if (event == nullptr) {
    return {"event", {}, "none: it would flash"};
  }
  const auto lasts = fmt::format("{}; lasts {}", event->meaning,
                                 std::chrono::floor<std::chrono::seconds>(event->displayTime));
  if (IsOver(*event, facts)) {
    return {"event", {}, lasts + ", so it is over"};
  }
  return {"event", facts.reported, lasts};
}

SSource Error(const SLampFacts& facts) {
  if (!facts.errors) {
    return {"error", {}, "diagnostics does not answer"};
  }
  if (facts.errors->empty()) {
    return {"error", {}, "diagnostics holds none"};
  }
  const auto& oldest = facts.errors->front();
  auto why = fmt::format("{} {}", oldest.identifier, oldest.name);
  if (const auto newer = facts.errors->size() - 1; newer > 0) {
    why += fmt::format(", and {} newer", newer);
  }
  if (facts.state != ipc::EStateEnabled) {
    return {"error", {}, why + "; heard only while the daemon is Enabled"};
  }
  return {"error", LedStateText(LedOfError(oldest.identifier)),
          fmt::format("{}; at least {} % bright", why, kErrorFloor)};
}

SSource Disabled(const SLampFacts& facts) {
  if (!facts.state) {
    return {"disabled", {}, "the daemon does not answer"};
  }
  if (IsEnabled(facts)) {
    return {"disabled", {}, "no: the daemon is Enabled, the installation complete"};
  }
  return {"disabled", LedStateText(kDisabledLed),
          (*facts.state == ipc::EStateEnabled
               ? std::string("InstallationComplete is false")
               : fmt::format("the daemon is {}", StateToString(*facts.state))) +
              "; at full brightness"};
}

SSource Connector(const SLampFacts& facts) {
  if (!facts.connectorState) {
    return {"connector",
            {},
            fmt::format("the session manager does not answer: {} until it is first heard, then its "
                        "last state counts",
                        LedStateText(kDisabledLed))};
  }
  const auto number = *facts.connectorState;
  const auto known = HmiStateOf(number);
  const auto& led = kStateLeds.at(static_cast<std::size_t>(known.value_or(EHmiState::EAvailable)));
  constexpr std::string_view kPrefix = "EConnectorState";
  const auto why =
      known
          ? ConnectorStateToString(static_cast<ipc::EConnectorState>(number)).substr(kPrefix.size())
          : fmt::format("{} is not a state that the daemon knows: as if available", number);
  if (!led) {
    return {"connector", {}, why + ": leaves the lamp as it is"};
  }
  return {"connector", LedStateText(*led), why};
}

bool ShowsError(const SLampFacts& facts) {
  return facts.reported && facts.reported->starts_with("Red/Blink");
}

// Why the lamp may show something else than the winner wants.
std::string Excuse(const SLampFacts& facts, const SSource& winner) {
  if (const CEvent* event = ReportedEvent(facts); event != nullptr) {
    return fmt::format("the event ({}) was asked for again, or the report of its end is missing",
                       event->meaning);
  }
  if (facts.reportedAge < kOnItsWay) {
    return "the lamp has only just changed: look again";
  }
  if (ShowsError(facts) && winner.name == "error") {
    return "the oldest error for the daemon is the one that it heard first, which may be another";
  }
  if (ShowsError(facts)) {
    return winner.name == "disabled"
               ? "an error that was heard while the daemon was Enabled comes back to a disabled "
                 "lamp when the connector's state changes"
               : "an error that ended while the daemon was not Enabled is shown until its end is "
                 "notified again";
  }
  if (winner.name == "error") {
    return "an error that began while the daemon was not Enabled is not shown";
  }
  if (facts.reported == LedStateText(kDisabledLed)) {
    return "the daemon may not have heard from the session manager yet, or InstallationComplete "
           "was false when the daemon was initialised";
  }
  return "the daemon tells each change once: a report was lost while diagnostics was down, or the "
         "connector's state has not reached the daemon";
}

}  // namespace

SLampExplanation ExplainLamp(const SLampFacts& facts) {
  SLampExplanation explanation;
  explanation.sources = {Event(facts), Error(facts), Disabled(facts), Connector(facts)};
  const auto note = [&](std::string text) { explanation.notes.push_back(std::move(text)); };
  const auto winner = std::ranges::find_if(explanation.sources,
                                           [](const auto& each) { return each.wants.has_value(); });
  if (!facts.errors) {
    note("diagnostics does not answer: neither the report nor the errors are known");
  } else if (!facts.reported) {
    note(fmt::format("nothing was reported: the daemon begins with {} and tells only changes",
                     LedStateText(kDisabledLed)));
  }
  if (!facts.state) {
    note("the daemon does not answer: nobody decides, and the lamp keeps what it showed");
    return explanation;
  }
  if (winner == explanation.sources.end()) {
    note("nobody asks for a light now: the lamp keeps what it showed");
    return explanation;
  }
  explanation.winner = winner->name;
  if (!facts.errors) {
    return explanation;
  }
  // A lamp that shows what it has shown since the daemon's start has not been reported.
  const auto shown = facts.reported.value_or(LedStateText(kDisabledLed));
  explanation.fits = shown == *winner->wants;
  if (!*explanation.fits) {
    note(fmt::format("{} was expected, {} is shown: {}", *winner->wants, shown,
                     Excuse(facts, *winner)));
  }
  return explanation;
}
