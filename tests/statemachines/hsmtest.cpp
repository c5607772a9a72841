#include <stdexcept>

#include "statemachines/hsm.h"
#include "tests/statemachines/doorfixture.h"

struct CAlienTag {};

template <>
struct HsmEventNames<CAlienTag> {
  static constexpr std::string_view kNames[] = {"AlienPush", "Unheard"};
};

namespace {

using testing::ElementsAre;

class AMachine : public CDoorFixture {};

TEST_F(AMachine, EntersItsInitialLeafAndThenHandlesWhatWasPostedBefore) {
  Post<Pull>();
  EXPECT_THAT(TraceOf<>(),
              ElementsAre("State Door: init", "State Closed: entry", "enter closed",
                          "State Closed: event recv Pull", "State Closed: event hndl Pull"));
}

TEST_F(AMachine, LeavesALeafBeforeItEntersTheNextAndRunsTheirActionsInOrder) {
  mHandler->ExtEnabledRsp = [] { LOG(Trace, "enabled"); };
  After<>();
  EXPECT_THAT(TraceOf<Push>(),
              ElementsAre("State Closed: event recv Push", "State Closed: event hndl Push",
                          "State Closed: exit", "State Opening: entry",
                          "State Opening: event recv Opened", "State Opening: event hndl Opened",
                          "State Opening: exit", "State Open: entry", "light on", "enabled"));
  EXPECT_THAT(TraceOf<Break>(),
              ElementsAre("State Open: event recv Break", "State Door: event hndl Break",
                          "State Open: exit", "creak", "light off", "State Broken: entry"));
}

TEST_F(AMachine, EntersALeafAgainThatIsItsOwnTargetAndPrefersTheLeafsReactionToTheComposites) {
  mHandler->ExtErrorRsp = [] { LOG(Trace, "broken"); };
  After<Break>();
  EXPECT_THAT(
      (TraceOf<Break, Shake>()),
      ElementsAre("State Broken: event recv Break", "State Door: event hndl Break",
                  "State Broken: exit", "State Broken: entry", "broken",
                  "State Broken: event recv Shake", "State Broken: event hndl Shake", "creak"));
}

TEST_F(AMachine, HandlesWhatAnActionPostsBehindWhatWaitsAlready) {
  After<>();
  EXPECT_THAT((TraceOf<Shake, Pull>()),  // Shake posts Break
              ElementsAre("State Closed: event recv Shake", "State Door: event hndl Shake",
                          "State Closed: event recv Pull", "State Closed: event hndl Pull",
                          "State Closed: event recv Break", "State Door: event hndl Break",
                          "State Closed: exit", "State Broken: entry"));
}

TEST_F(AMachine, TellsEventsApartByTypeEvenWhereTheirNumbersAreEqual) {
  After<>();
  auto otherMachine = Post<CHsmEvent<CAlienTag, 0>>();
  auto otherPayload = Post<CHsmEvent<CDoorTag, 0, int>>(1);
  auto unheard = Post<CHsmEvent<CAlienTag, 1>>();
  RunUntilIdle();
  EXPECT_FALSE(otherMachine.get());
  EXPECT_FALSE(otherPayload.get());
  EXPECT_FALSE(unheard.get());
}

TEST_F(AMachine, HandsAnActionACopyOfThePayload) {
  After<>();
  std::string who = "Ada";
  Post<Knock>(2, who);
  who = "Eve";
  EXPECT_THAT(TraceOf<>(), ElementsAre("State Closed: event recv Knock",
                                       "State Closed: event hndl Knock", "ring 2 Ada"));
}

TEST_F(AMachine, AsksNoEventForItsNameWhileTheTraceIsOff) {
  struct CShyEvent : IHsmEvent {
    CShyEvent() : IHsmEvent(Pull::kType) {}
    const std::string& GetName() const override { throw std::logic_error("asked"); }
  };
  After<Break>();
  Log::SetLogLevel(Log::ELogLevel::EDebug);
  EXPECT_FALSE(Verdict<CShyEvent>());
}

TEST_F(AMachine, KeepsTheVerdictForWhoAsksLate) {
  const auto taken = mHandler->Post<Pull>();
  const auto rejected = mHandler->Post<Opened>();
  RunUntilIdle();
  EXPECT_TRUE(taken->GetHandled().get());
  EXPECT_FALSE(rejected->GetHandled().get());
}

TEST(AnActionHandler, PostsNothingWithoutAMachine) {
  try {
    CDoorHandler().Post<Break>();
    FAIL() << "posted to no machine";
  } catch (const std::logic_error& error) {
    EXPECT_STREQ(error.what(), "CHsmActionHandlerBase: IHsmInterface not set");
  }
}

}  // namespace
