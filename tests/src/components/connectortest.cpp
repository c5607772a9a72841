#include <algorithm>

#include "src/components/connector.h"
#include "tests/src/components/connectorfixture.h"

namespace {

using namespace std::chrono_literals;
using Log::ELogLevel;
using testing::ElementsAre;
using testing::IsEmpty;

class AConnector : public CConnectorFixture {};

TEST_F(AConnector, ShowsTheDisabledLampUntilItIsEnabled) {
  EXPECT_EQ(Lamp(), "Yellow/On");
  EXPECT_EQ(Limits(), "0..1000");
  EXPECT_TRUE(mSessions->Notify(kCharging));
  EXPECT_EQ(Lamp(), "Yellow/On");
  mConnector->Enable();
  EXPECT_EQ(Lamp(), "Blue/Pulsating");
  EXPECT_EQ(Limits(), "3..76");
  mConnector->Disable();
  EXPECT_EQ(Lamp(), "Yellow/On");
  EXPECT_EQ(Limits(), "0..1000");
}

TEST_F(AConnector, ShowsEachStateAndLeavesTheLampWhileTheStateChanges) {
  mConnector->Enable();
  for (int before = 0; before < std::ssize(kStateLamps); ++before) {
    for (int state = 0; state < std::ssize(kStateLamps); ++state) {
      SCOPED_TRACE(testing::Message() << before << " " << state);
      mSessions->Notify(before);
      const std::string lampBefore = Lamp();
      mSessions->Notify(state);
      EXPECT_EQ(Lamp(), state == kChanging ? lampBefore : kStateLamps[static_cast<size_t>(state)]);
    }
  }
  EXPECT_THAT(mLog.Lines(), IsEmpty());
}

TEST_F(AConnector, TakesAnUnknownStateForAvailable) {
  mConnector->Enable();
  for (const int state : {13, 1000, -1}) {
    mSessions->Notify(kCharging);
    mLog.Clear();
    mSessions->Notify(state);
    EXPECT_EQ(Lamp(), "Green/On");
    EXPECT_THAT(mLog.Lines(),
                ElementsAre(LogCapture::Line{
                    ELogLevel::EWarning,
                    "(src/components/connector:206) [Connector 1] Unexpected connector state "
                    "received: " +
                        std::to_string(state)}));
  }
}

TEST_F(AConnector, BlinksEachErrorInItsCode) {
  const struct {
    int first;
    int last;
    const char* lamp;
  } rows[] = {
      {-1, 1001, "Red/Blink2"},    {1002, 1003, "Red/Blink1"}, {1004, 1005, "Red/Blink3"},
      {1006, 1006, "Red/Blink1"},  {1007, 1056, "Red/Blink2"}, {1057, 1057, "Red/Blink1"},
      {1058, 1060, "Red/Blink2"},  {1061, 1061, "Red/Blink1"}, {1062, 1064, "Red/Blink2"},
      {1065, 1065, "Red/Blink1"},  {1066, 1251, "Red/Blink2"}, {1252, 1256, "Red/Blink1"},
      {1257, 20504, "Red/Blink2"},
  };
  for (const auto& [first, last, lamp] : rows) {
    for (const int identifier : {first, last}) {
      SCOPED_TRACE(identifier);
      mConnector->AddError(identifier);
      EXPECT_EQ(Lamp(), lamp);
      EXPECT_EQ(Limits(), "0..100");
      mConnector->RemoveError(identifier);
      EXPECT_EQ(Lamp(), "Yellow/On");
    }
  }
}

TEST_F(AConnector, ShowsTheOldestErrorUntilItIsRemoved) {
  mConnector->Enable();
  mSessions->Notify(kCharging);
  mConnector->AddError(1004);
  mConnector->AddError(1002);
  mConnector->AddError(1000);
  EXPECT_EQ(Lamp(), "Red/Blink3");
  mConnector->AddError(1004);
  mConnector->RemoveError(1000);
  EXPECT_EQ(Lamp(), "Red/Blink3");
  mConnector->RemoveError(1004);
  EXPECT_EQ(Lamp(), "Red/Blink1");
  EXPECT_EQ(Limits(), "0..100");
  mConnector->RemoveError(1002);
  EXPECT_EQ(Lamp(), "Blue/Pulsating");
  EXPECT_EQ(Limits(), "3..76");
}

TEST_F(AConnector, IgnoresTheEndOfAnErrorThatItDoesNotKnow) {
  mConnector->AddError(1004);
  mHistory->Take();
  Log::SetLogLevel(ELogLevel::ETrace);
  mConnector->RemoveError(1002);
  EXPECT_THAT(mHistory->Take(), IsEmpty());
  EXPECT_THAT(mLog.Lines(), ElementsAre(LogCapture::Line{ELogLevel::ETrace,
                                                         "[Connector 1] CConnector::RemoveError"}));
}

TEST_F(AConnector, ShowsAnErrorWhileDisabledButNotOverTheDisabling) {
  mConnector->AddError(1004);
  EXPECT_EQ(Lamp(), "Red/Blink3");
  mConnector->Disable();
  EXPECT_EQ(Lamp(), "Yellow/On");
  mSessions->Notify(kChanging);
  EXPECT_EQ(Lamp(), "Red/Blink3");
}

TEST_F(AConnector, ShowsAnEventBeforeEverythingElseUntilItsTimeIsOver) {
  const struct {
    EConnectorEvent event;
    const char* lamp;
    const char* limits;
  } rows[] = {
      {EConnectorEvent::EAuthSuccess, "Green/Flashing", "0..50"},
      {EConnectorEvent::EAuthFailure, "Red/Flashing", "0..50"},
      {EConnectorEvent::EIdentify, "White/Flashing", "0..1000"},
  };
  for (const auto& [event, lamp, limits] : rows) {
    SCOPED_TRACE(lamp);
    mConnector->AddError(1002);
    mConnector->ShowEvent(event, 1000ms);
    EXPECT_EQ(Lamp(), lamp);
    EXPECT_EQ(Limits(), limits);
    mConnector->RemoveError(1002);
    mConnector->Enable();
    mSessions->Notify(kCharging);
    mConnector->AddError(1004);
    Advance(999ms);
    EXPECT_EQ(Lamp(), lamp);
    Advance(1ms);
    EXPECT_EQ(Lamp(), "Red/Blink3");
    EXPECT_EQ(Limits(), "0..50");
    mConnector->RemoveError(1004);
    EXPECT_EQ(Lamp(), "Blue/Pulsating");
  }
}

TEST_F(AConnector, GivesTheNextEventItsWholeTime) {
  mConnector->Enable();
  mConnector->ShowEvent(EConnectorEvent::EIdentify, 5000ms);
  Advance(4999ms);
  mConnector->ShowEvent(EConnectorEvent::EAuthSuccess, 1000ms);
  EXPECT_EQ(Lamp(), "Green/Flashing");
  EXPECT_EQ(Limits(), "0..50");
  Advance(999ms);
  EXPECT_EQ(Lamp(), "Green/Flashing");
  Advance(1ms);
  EXPECT_EQ(Lamp(), "Yellow/On");
}

TEST_F(AConnector, KeepsTheEventsLampWhenTheStateIsChangingAtItsEnd) {
  mConnector->Enable();
  mSessions->Notify(kCharging);
  mConnector->ShowEvent(EConnectorEvent::EAuthFailure, 1000ms);
  mSessions->Notify(kChanging);
  Advance(1000ms);
  EXPECT_EQ(Lamp(), "Red/Flashing");
  mSessions->Notify(kCharging);
  EXPECT_EQ(Lamp(), "Blue/Pulsating");
}

TEST_F(AConnector, HoldsTheLampForAnUnknownEventToo) {
  mConnector->Enable();
  mSessions->Notify(kAvailable);
  mHistory->Take();
  mConnector->ShowEvent(EConnectorEvent(3), 1000ms);
  mSessions->Notify(kCharging);
  EXPECT_THAT(mHistory->Take(), IsEmpty());
  EXPECT_THAT(mLog.Lines(),
              ElementsAre(LogCapture::Line{ELogLevel::EWarning,
                                           "(src/components/connector:321) [Connector 1] "
                                           "Unexpected active event: 3"}));
  Advance(1000ms);
  EXPECT_EQ(Lamp(), "Blue/Pulsating");
}

TEST_F(AConnector, ReportsEachChangeOfItsLampOnce) {
  mConnector->Enable();
  mSessions->Notify(kCharging);
  mSessions->Notify(12);
  mConnector->AddError(1004);
  mConnector->AddError(1005);
  mConnector->RemoveError(1004);
  mConnector->RemoveError(1005);
  EXPECT_THAT(Reports(), ElementsAre("Blue/Pulsating", "Red/Blink3", "Blue/Pulsating"));
}

TEST_F(AConnector, ExplainsItsDecisionsInTheLog) {
  const auto debugLines = [this] {
    std::vector<std::string> texts;
    for (const LogCapture::Line& line : mLog.Lines()) {
      if (line.mText.starts_with("(src/components/connector:")) {
        EXPECT_EQ(line.mLevel, ELogLevel::EDebug);
        texts.push_back(line.mText.substr(std::string("(src/components/connector:").size()));
      }
    }
    mLog.Clear();
    return texts;
  };
  Log::SetLogLevel(ELogLevel::EDebug);
  mSessions->Notify(kCharging);
  EXPECT_THAT(debugLines(),
              ElementsAre("121) [Connector 1] SessionManager notified state: 6",
                          "152) [Connector 1] Connector is not yet enabled, show disabled LED"));
  mConnector->Enable();
  EXPECT_THAT(debugLines(), ElementsAre("158) [Connector 1] Change LED for State: 3"));
  mConnector->AddError(1004);
  EXPECT_THAT(debugLines(), ElementsAre("147) [Connector 1] Change LED for Signal: 1004"));
  mConnector->ShowEvent(EConnectorEvent::EIdentify, 1000ms);
  EXPECT_THAT(debugLines(), ElementsAre("66) [Connector 1] Change LED for Event: 2"));
  mConnector->RemoveError(1004);
  EXPECT_THAT(debugLines(),
              ElementsAre("142) [Connector 1] Connector is already showing event, skip update "
                          "connector LED"));
  Advance(1000ms);
  EXPECT_THAT(debugLines(), ElementsAre("131) [Connector 1] Active event reset, updating led...",
                                        "158) [Connector 1] Change LED for State: 3"));
}

TEST_F(AConnector, TracesItsOperations) {
  Log::SetLogLevel(ELogLevel::ETrace);
  mConnector->Enable();
  mConnector->ShowEvent(EConnectorEvent::EAuthSuccess, 1000ms);
  Advance(1000ms);
  mConnector->AddError(1004);
  mSessions->Notify(kAvailable);
  mConnector->Disable();
  std::vector<std::string> traces;
  for (const LogCapture::Line& line : mLog.Lines()) {
    if (line.mText.starts_with("[Connector 1] CConnector::")) {
      EXPECT_EQ(line.mLevel, ELogLevel::ETrace);
      traces.push_back(line.mText.substr(std::string("[Connector 1] CConnector::").size()));
    }
  }
  EXPECT_THAT(traces, ElementsAre("Enable", "ShowEvent", "MapEventToLedState", "AddError",
                                  "MapErrorToLedState", "HandleSessionStateChanged",
                                  "MapErrorToLedState", "Disable"));
}

TEST_F(AConnector, LetsNobodyCallItAfterItsEnd) {
  mConnector->Enable();
  mConnector->ShowEvent(EConnectorEvent::EIdentify, 1000ms);
  mConnector.reset();
  mHistory->Take();
  EXPECT_FALSE(mSessions->Notify(kCharging));
  Advance(2000ms);
  EXPECT_THAT(mHistory->Take(), IsEmpty());
}

TEST(ConnectorTables, ListEachErrorOnceAndOnlyThoseWithACodeOfTheirOwn) {
  EXPECT_TRUE(
      std::ranges::is_sorted(kErrorModes, std::ranges::less_equal{}, &CErrorMode::identifier));
  for (const CErrorMode& row : kErrorModes) {
    EXPECT_NE(row.mode, kOtherErrorMode);
  }
}

TEST(ConnectorTables, ShowNoEventAsAStateOrAnErrorOrAnotherEvent) {
  std::vector<CLedState> leds(kEventLeds.begin(), kEventLeds.end());
  for (const CLedState& event : kEventLeds) {
    EXPECT_EQ(std::ranges::count(leds, event), 1);
    EXPECT_EQ(std::ranges::count(kStateLeds, std::optional(event)), 0);
    EXPECT_EQ(std::ranges::count(kErrorModes, event.mode, &CErrorMode::mode), 0);
  }
}

}  // namespace
