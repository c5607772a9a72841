#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "statemachines/feedbackhsm.h"
#include "tests/support/lifecyclemachine.h"
#include "tests/support/logcapture.h"

namespace {

using Lines = std::vector<std::string>;

// An event that nobody takes and that ends Run: the machine asks for its name as it receives it.
class CHalt : public IHsmEvent {
 public:
  explicit CHalt(IHsmInterface& machine) : IHsmEvent(kType), mMachine(machine) {}
  const std::string& GetName() const override {
    static const std::string name = "Halt";
    mMachine.Stop();
    return name;
  }

 private:
  static constexpr CHsmEventType kType{1000};
  IHsmInterface& mMachine;
};

template <typename Event, typename... Payload>
std::shared_ptr<IHsmEvent> Make() {
  return std::make_shared<Event>(Payload()...);
}

// clang-format off

// By their numbers.
const std::vector<std::function<std::shared_ptr<IHsmEvent>()>> kEvents{
    Make<ExtDisableReq>, Make<ExtEnableReq>, Make<ExtError>,
    Make<ExtOnTriggerFeedbackEvent, ipc::MFbEventType, ipc::MInstanceType>,
    Make<IntDisablingDone>, Make<IntEnablingDone>, Make<IntError>, Make<IntFatalError>,
    Make<IntInitializingDone>, Make<IntOnErrorChanged, ipc::MDiagnosticsSignal>, Make<IntRecover>,
    Make<IntRecoveringDone>, Make<IntTerminate>, Make<IntTerminatingDone>,
};

struct CLeaf {
  std::string name;
  std::vector<unsigned> way;  // the events that lead there
  Lines entry;
  Lines exit;
};

// By their numbers, from 1.
const std::vector<CLeaf> kLeaves{
    {"Disabled",            {0, 8},             {"ExtDisabledRsp"}, {}},
    {"Disabling",           {0, 8, 1, 5, 0},    {}, {}},
    {"Enabled",             {0, 8, 1, 5},       {"IntStartMonitoring", "IntEnableConnectors", "ExtEnabledRsp", "IntStartAliveTimer"},
                                                {"IntDisableConnectors", "IntStopMonitoring", "IntStopAliveTimer"}},
    {"Enabling",            {0, 8, 1},          {}, {}},
    {"Error",               {6},                {"ExtErrorRsp"}, {}},
    {"FatalError",          {7},                {"ExtFatalErrorRsp"}, {}},
    {"Initializing",        {0},                {"IntInitialize"}, {}},
    {"Recovering",          {6, 10},            {}, {}},
    {"Terminating",         {12},               {}, {}},
    {"Uninitialized",       {},                 {"ExtUninitializedRsp"}, {}},
    {"_Final_Statemachine", {12, 13},           {}, {}},
};

struct CReaction {
  std::string target;  // empty: the leaf stays
  std::string action;
};

const std::map<std::pair<std::string, std::string>, CReaction> kReactions{
    {{"Uninitialized", "ExtDisableReq"},             {"Initializing", ""}},
    {{"Initializing",  "IntInitializingDone"},       {"Disabled", ""}},
    {{"Disabled",      "ExtEnableReq"},              {"Enabling", ""}},
    {{"Disabled",      "ExtDisableReq"},             {"", "ExtDisabledRsp"}},
    {{"Enabling",      "IntEnablingDone"},           {"Enabled", ""}},
    {{"Enabled",       "ExtDisableReq"},             {"Disabling", ""}},
    {{"Enabled",       "IntOnErrorChanged"},         {"", "IntUpdateErrorState 0"}},
    {{"Enabled",       "ExtOnTriggerFeedbackEvent"}, {"", "IntTriggerFeedbackEvent 0 0"}},
    {{"Enabled",       "ExtEnableReq"},              {"", "ExtEnabledRsp"}},
    {{"Disabling",     "IntDisablingDone"},          {"Disabled", ""}},
    {{"Error",         "IntRecover"},                {"Recovering", ""}},
    {{"Recovering",    "IntRecoveringDone"},         {"Disabled", ""}},
    {{"FatalError",    "IntError"},                  {"", "ExtFatalErrorRsp"}},
    {{"FatalError",    "ExtDisableReq"},             {"", "ExtFatalErrorRsp"}},
    {{"FatalError",    "ExtEnableReq"},              {"", "ExtFatalErrorRsp"}},
    {{"Terminating",   "IntTerminatingDone"},        {"_Final_Statemachine", ""}},
    {{"Statemachine",  "IntError"},                  {"Error", ""}},
    {{"Statemachine",  "IntFatalError"},             {"FatalError", ""}},
    {{"Statemachine",  "IntTerminate"},              {"Terminating", ""}},
    {{"Statemachine",  "ExtError"},                  {"", ""}},
};

// clang-format on

void Append(Lines& lines, const Lines& more) {
  lines.insert(lines.end(), more.begin(), more.end());
}

Lines ExpectedReaction(const CLeaf& leaf, const std::string& event, bool& handled) {
  auto reaction = kReactions.find({leaf.name, event});
  std::string level = leaf.name;
  if (reaction == kReactions.end()) {
    level = "Statemachine";
    reaction = kReactions.find({level, event});
  }
  handled = reaction != kReactions.end();
  Lines lines{"State " + leaf.name + ": event recv " + event,
              "State " + level + (handled ? ": event hndl " : ": event unhn ") + event};
  std::string next = leaf.name;
  if (handled && !reaction->second.target.empty()) {
    next = reaction->second.target;
    const auto target = std::ranges::find(kLeaves, next, &CLeaf::name);
    lines.push_back("State " + leaf.name + ": exit");
    Append(lines, leaf.exit);
    lines.push_back("State " + next + ": entry");
    Append(lines, target->entry);
  } else if (handled && !reaction->second.action.empty()) {
    lines.push_back(reaction->second.action);
  }
  lines.push_back("State " + next + ": event recv Halt");
  return lines;
}

class CRun {
 public:
  CRun() { mHandler->SetMachine(mMachine.get()); }

  std::future<bool> Post(std::shared_ptr<IHsmEvent> event) {
    auto handled = event->GetHandled();
    mMachine->PostEvent(std::move(event));
    return handled;
  }
  std::future<bool> Post(unsigned event) { return Post(kEvents[event]()); }

  // Handles what has been posted so far, and no event that an action has posted since.
  void Run() {
    auto halted = Post(std::make_shared<CHalt>(*mMachine));
    do {
      mMachine->Run();
    } while (halted.wait_for(std::chrono::seconds(0)) != std::future_status::ready);
  }

 private:
  const std::shared_ptr<CLoggingHandler> mHandler = std::make_shared<CLoggingHandler>();
  const std::shared_ptr<CLifecycleMachine> mMachine = std::make_shared<CLifecycleMachine>(mHandler);
};

class TheLifecycle : public testing::Test {
 protected:
  // From where the line first comes to the next Halt.
  Lines TraceFrom(const std::string& first) const {
    Lines lines;
    for (const auto& line : mLog.Lines()) {
      if (!lines.empty() || line.mText == first) {
        lines.push_back(line.mText);
      }
      if (!lines.empty() && line.mText.ends_with("recv Halt")) {
        break;
      }
    }
    return lines;
  }

  // The states as the board controller hears of them, and the actions.
  Lines Actions() const {
    Lines lines;
    for (const auto& line : mLog.Lines()) {
      if (!line.mText.starts_with("State ")) {
        lines.push_back(line.mText);
      }
    }
    return lines;
  }

  LogCapture mLog;
};

TEST_F(TheLifecycle, ReactsToEveryEventInEveryLeafAsItsTableSays) {
  for (const CLeaf& leaf : kLeaves) {
    for (unsigned number = 0; number < kEvents.size(); ++number) {
      const auto event = kEvents[number]();
      SCOPED_TRACE(leaf.name + " " + event->GetName());
      EXPECT_EQ(event->GetType().number, number);
      mLog.Clear();
      CRun run;
      for (const unsigned step : leaf.way) {
        run.Post(step);
      }
      auto verdict = run.Post(event);
      run.Run();
      bool handled = false;
      const Lines expected = ExpectedReaction(leaf, event->GetName(), handled);
      EXPECT_EQ(TraceFrom(expected.front()), expected);
      EXPECT_EQ(verdict.get(), handled);
    }
  }
}

TEST_F(TheLifecycle, GoesOnByItselfToTheNextLeafThatWaits) {
  CRun run;
  // An action's event waits behind the Halt of its round.
  const auto after = [&](unsigned event, int rounds) {
    mLog.Clear();
    run.Post(event);
    for (int round = 0; round < rounds; ++round) {
      run.Run();
    }
    return Actions();
  };
  const Lines& enter = kLeaves[2].entry;
  const Lines& leave = kLeaves[2].exit;
  using testing::ElementsAre;
  EXPECT_THAT(after(1, 2), ElementsAre("ExtUninitializedRsp"));
  EXPECT_THAT(after(0, 2), ElementsAre("IntInitialize", "ExtDisabledRsp"));
  EXPECT_EQ(after(1, 2), enter);

  Lines disabled = leave;
  disabled.push_back("ExtDisabledRsp");
  EXPECT_EQ(after(0, 2), disabled);
  after(1, 2);

  Lines recovered = leave;
  Append(recovered, {"ExtErrorRsp", "ExtDisabledRsp"});
  EXPECT_EQ(after(2, 4), recovered);
  after(1, 2);

  EXPECT_EQ(after(12, 2), leave);
  EXPECT_EQ(mLog.Count(Log::ELogLevel::ETrace, "State _Final_Statemachine: entry"), 1U);
}

}  // namespace
