#include <gtest/gtest.h>

#include <cctype>
#include <functional>

#include "statemachines/feedbackhsm.h"
#include "tests/statemachines/lifecyclefixture.h"

namespace {

using Lines = std::vector<std::string>;

// An event that nobody takes; the machine asks for its name as it receives it.
class CProbe : public IHsmEvent {
 public:
  explicit CProbe(std::function<void()> hook) : IHsmEvent(kType), mHook(std::move(hook)) {}
  const std::string& GetName() const override {
    static const std::string name = "Probe";
    mHook();
    return name;
  }

 private:
  static constexpr CHsmEventType kType{1000};
  const std::function<void()> mHook;
};

template <typename Event, typename... Payload>
std::shared_ptr<IHsmEvent> Make() {
  return std::make_shared<Event>(Payload()...);
}

// clang-format off

// By their numbers.
const std::pair<const char*, std::shared_ptr<IHsmEvent> (*)()> kEvents[] = {
    {"ExtDisableReq", Make<ExtDisableReq>},
    {"ExtEnableReq", Make<ExtEnableReq>},
    {"ExtError", Make<ExtError>},
    {"ExtOnTriggerFeedbackEvent", Make<ExtOnTriggerFeedbackEvent, ipc::MFbEventType, ipc::MInstanceType>},
    {"IntDisablingDone", Make<IntDisablingDone>},
    {"IntEnablingDone", Make<IntEnablingDone>},
    {"IntError", Make<IntError>},
    {"IntFatalError", Make<IntFatalError>},
    {"IntInitializingDone", Make<IntInitializingDone>},
    {"IntOnErrorChanged", Make<IntOnErrorChanged, ipc::MDiagnosticsSignal>},
    {"IntRecover", Make<IntRecover>},
    {"IntRecoveringDone", Make<IntRecoveringDone>},
    {"IntTerminate", Make<IntTerminate>},
    {"IntTerminatingDone", Make<IntTerminatingDone>},
};

// By their numbers. What becomes of each event in the leaf, by the event's number:
//   .      it is refused
//   a..k   the machine leaves the leaf and enters that one, a being number 1
//   -      the machine stays; the actions are listed in the order of these
const struct CLeaf {
  std::string name, reactions;
  std::vector<std::string> stays;
  Lines entry, exit;
  std::vector<unsigned> way;  // the events that lead to it
} kLeaves[] = {
    {"Disabled",            "-d-...ef....i.", {"state 2", ""}, {"state 2"}, {}, {0, 8}},
    {"Disabling",           "..-.a.ef....i.", {""}, {}, {}, {0, 8, 1, 5, 0}},
    {"Enabled",             "b---..ef.-..i.", {"state 3", "", "feedback 0 0", "error 0"},
     {"IntStartMonitoring", "IntEnableConnectors", "state 3", "IntStartAliveTimer"},
     {"IntDisableConnectors", "IntStopMonitoring", "IntStopAliveTimer"}, {0, 8, 1, 5}},
    {"Enabling",            "..-..cef....i.", {""}, {}, {}, {0, 8, 1}},
    {"Error",               "..-...ef..h.i.", {""}, {"state 4"}, {}, {6}},
    {"FatalError",          "---...-f....i.", {"state 5", "state 5", "", "state 5"}, {"state 5"}, {}, {7}},
    {"Initializing",        "..-...efa...i.", {""}, {"IntInitialize"}, {}, {0}},
    {"Recovering",          "..-...ef...ai.", {""}, {}, {}, {6, 10}},
    {"Terminating",         "..-...ef....ik", {""}, {}, {}, {12}},
    {"Uninitialized",       "g.-...ef....i.", {""}, {"state 1"}, {}, {}},
    {"_Final_Statemachine", "..-...ef....i.", {""}, {}, {}, {12, 13}},
};

// clang-format on

TEST(TheLifecycle, ReactsToEveryEventInEveryLeafAsItsTableSays) {
  for (const CLeaf& leaf : kLeaves) {
    auto stays = leaf.stays.begin();
    for (unsigned number = 0; number < std::size(kEvents); ++number) {
      const auto& [name, make] = kEvents[number];
      SCOPED_TRACE(leaf.name + " " + name);
      CLifecycle lifecycle;
      auto& machine = *lifecycle.mMachine;
      for (const unsigned step : leaf.way) {
        machine.PostEvent(kEvents[step].second());
      }
      machine.PostEvent(std::make_shared<CProbe>([&] { lifecycle.mLog.Clear(); }));
      const auto event = make();
      auto handled = event->GetHandled();
      machine.PostEvent(event);
      // Before what the actions post.
      bool done = false;
      machine.PostEvent(std::make_shared<CProbe>([&] {
        done = true;
        machine.Stop();
      }));
      while (!done) {
        machine.Run();
      }

      const char reaction = leaf.reactions[number];
      const CLeaf* next = &leaf;
      Lines expected;
      if (std::isalpha(reaction) != 0) {
        next = &kLeaves[reaction - 'a'];
        expected = leaf.exit;
        expected.insert(expected.end(), next->entry.begin(), next->entry.end());
      } else if (reaction == '-' && !(stays++)->empty()) {
        expected.push_back(*(stays - 1));
      }
      EXPECT_EQ(lifecycle.Actions(), expected);
      EXPECT_EQ(handled.get(), reaction != '.');
      EXPECT_EQ(machine.CurrentState()->GetId() - 1, static_cast<unsigned>(next - kLeaves));
      EXPECT_EQ(lifecycle.mLog.Count(Log::ELogLevel::ETrace,
                                     "State " + leaf.name + ": event recv " + name),
                1U);
    }
  }
}

}  // namespace
