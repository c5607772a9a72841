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
  auto handled = Post<Pull>();
  RunUntilIdle();
  EXPECT_THAT(Trace(),
              ElementsAre("State Door: init", "State Closed: entry", "enter closed",
                          "State Closed: event recv Pull", "State Closed: event hndl Pull"));
  EXPECT_TRUE(handled.get());
}

TEST_F(AMachine, LeavesALeafBeforeItEntersTheNextAndRunsTheirActionsInOrder) {
  mHandler->ExtEnabledRsp = [] { LOG(Trace, "enabled"); };
  After<>();
  Post<Push>();
  RunUntilIdle();
  Post<Pull>();
  RunUntilIdle();
  EXPECT_THAT(
      Trace(),
      ElementsAre("State Closed: event recv Push", "State Closed: event hndl Push",
                  "State Closed: exit", "State Opening: entry", "State Opening: event recv Opened",
                  "State Opening: event hndl Opened", "State Opening: exit", "State Open: entry",
                  "light on", "enabled", "State Open: event recv Pull",
                  "State Open: event hndl Pull", "State Open: exit", "creak", "light off",
                  "State Closed: entry", "enter closed"));
}

TEST_F(AMachine, NamesTheCompositeWhereTheCompositeReactsButLeavesTheLeaf) {
  After<Push>();
  Post<Break>();
  RunUntilIdle();
  EXPECT_THAT(Trace(),
              ElementsAre("State Open: event recv Break", "State Door: event hndl Break",
                          "State Open: exit", "creak", "light off", "State Broken: entry"));
}

TEST_F(AMachine, LeavesAndEntersALeafAgainThatIsItsOwnTarget) {
  mHandler->ExtErrorRsp = [] { LOG(Trace, "broken"); };
  After<Break>();
  Post<Break>();
  RunUntilIdle();
  EXPECT_THAT(Trace(), ElementsAre("State Broken: event recv Break", "State Door: event hndl Break",
                                   "State Broken: exit", "State Broken: entry", "broken"));
}

TEST_F(AMachine, PrefersTheLeafsReactionToTheComposites) {
  After<Break>();
  Post<Shake>();
  RunUntilIdle();
  EXPECT_THAT(Trace(), ElementsAre("State Broken: event recv Shake",
                                   "State Broken: event hndl Shake", "creak"));
}

TEST_F(AMachine, HandlesWhatAnActionPostsBehindWhatWaitsAlready) {
  After<>();
  Post<Shake>();  // posts Break
  Post<Pull>();
  RunUntilIdle();
  EXPECT_THAT(Trace(), ElementsAre("State Closed: event recv Shake", "State Door: event hndl Shake",
                                   "State Closed: event recv Pull", "State Closed: event hndl Pull",
                                   "State Closed: event recv Break", "State Door: event hndl Break",
                                   "State Closed: exit", "State Broken: entry"));
}

TEST_F(AMachine, RejectsAnEventThatNeitherTheLeafNorTheCompositeTakes) {
  After<>();
  auto handled = Post<Opened>();
  RunUntilIdle();
  EXPECT_FALSE(handled.get());
  EXPECT_THAT(Trace(),
              ElementsAre("State Closed: event recv Opened", "State Door: event unhn Opened"));
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
  EXPECT_EQ(mLog.Count(Log::ELogLevel::ETrace, "exit"), 0U);
}

TEST_F(AMachine, HandsAnActionACopyOfThePayload) {
  After<>();
  std::string who = "Ada";
  Post<Knock>(2, who);
  who = "Eve";
  RunUntilIdle();
  EXPECT_THAT(Trace(), ElementsAre("State Closed: event recv Knock",
                                   "State Closed: event hndl Knock", "ring 2 Ada"));
}

TEST_F(AMachine, SkipsACallbackThatWasNeverSet) {
  After<Push>();
  auto handled = Post<Knock>(1, "Ada");
  RunUntilIdle();
  EXPECT_TRUE(handled.get());
  int calls = 0;
  mHandler->ExtEnabledRsp = [&calls] { ++calls; };
  Post<Knock>(1, "Ada");
  RunUntilIdle();
  EXPECT_EQ(calls, 1);
}

TEST_F(AMachine, AsksNoEventForItsNameWhileTheTraceIsOff) {
  class CShyEvent : public IHsmEvent {
   public:
    CShyEvent() : IHsmEvent(Pull::kType) {}
    const std::string& GetName() const override {
      ++mAsked;
      return mName;
    }
    mutable int mAsked = 0;

   private:
    const std::string mName = "Shy";
  };
  After<Break>();
  Log::SetLogLevel(Log::ELogLevel::EDebug);
  const auto event = std::make_shared<CShyEvent>();
  mMachine->PostEvent(event);
  RunUntilIdle();
  EXPECT_EQ(event->mAsked, 0);
  EXPECT_THAT(Trace(), ElementsAre());
}

TEST(AnActionHandler, PostsNothingWithoutAMachine) {
  CDoorHandler handler;
  try {
    handler.Post<Break>();
    FAIL() << "posted to no machine";
  } catch (const std::logic_error& error) {
    EXPECT_STREQ(error.what(), "CHsmActionHandlerBase: IHsmInterface not set");
  }
}

TEST_F(AMachine, GivesTheHandlerThePostedEventBack) {
  const auto posted = mHandler->Post<Opened>();
  RunUntilIdle();
  EXPECT_FALSE(posted->GetHandled().get()) << "the machine has answered this very event";
}

}  // namespace
