// What the connector promises when several threads use it.
#include <functional>
#include <future>
#include <thread>

#include "tests/src/components/connectorfixture.h"

namespace {

using namespace std::chrono_literals;

class ABusyConnector : public CConnectorFixture {
 protected:
  // After each write another thread gets its chance to come in between.
  ABusyConnector() { mHistory->OnAdd(std::this_thread::yield); }
};

TEST_F(ABusyConnector, NeverShowsAnOlderDecisionAfterANewerOne) {
  const auto notify = [this](int state) { return [this, state] { mSessions->Notify(state); }; };
  const auto enable = [this] { mConnector->Enable(); };
  const auto disable = [this] { mConnector->Disable(); };
  const auto add = [this] { mConnector->AddError(1004); };
  const auto remove = [this] { mConnector->RemoveError(1004); };
  const auto identify = [this] { mConnector->ShowEvent(EConnectorEvent::EIdentify, 1000ms); };
  // Each row ends in the same lamp in whatever order its actions take effect.
  const struct {
    std::vector<std::function<void()>> actions;
    const char* lamp;
  } rows[] = {
      {{notify(kCharging), enable}, "Blue/Pulsating"},
      {{notify(kAuthorized), add, enable}, "Red/Blink3"},
      {{notify(kAvailable), remove}, "Green/On"},
      {{notify(kCharging), disable}, "Yellow/On"},
      {{notify(kAvailable), identify, enable}, "White/Flashing"},
      {{notify(kCharging), add, [this] { Advance(1000ms); }}, "Red/Blink3"},
      {{notify(kAuthorized), remove, enable}, "Blue/On"},
      {{notify(kCharging), add, identify, disable, enable}, nullptr},
      {{[this] { Advance(1000ms); }, remove, notify(kAvailable), enable}, "Green/On"},
      {{disable, notify(kAuthorized)}, "Yellow/On"},
  };
  for (int round = 0; round < 50; ++round) {
    for (const auto& [actions, lamp] : rows) {
      AtOnce(actions);
      if (lamp != nullptr) {
        ASSERT_EQ(Lamp(), lamp) << "round " << round;
      }
      ASSERT_EQ(Reports().back(), Lamp());
    }
  }
}

TEST_F(ABusyConnector, GivesAnEventItsWholeTimeThatBeginsAsTheOneBeforeEnds) {
  for (int round = 0; round < 200; ++round) {
    mConnector->ShowEvent(EConnectorEvent::EAuthSuccess, 1000ms);
    mWorker->Sync();
    AtOnce({[this] { mClock->Advance(1000ms); }, [this] { mConnector->Enable(); },
            [this] { mConnector->ShowEvent(EConnectorEvent::EAuthFailure, 2000ms); }});
    mWorker->Sync();
    ASSERT_EQ(Lamp(), "Red/Flashing") << "round " << round;
    Advance(2000ms);
    ASSERT_EQ(Lamp(), "Yellow/On") << "round " << round;
  }
}

TEST_F(ABusyConnector, EndsOnlyAfterTheWorkerHasLeftIt) {
  mConnector->ShowEvent(EConnectorEvent::EIdentify, 1000ms);
  bool listens = true;
  std::promise<void> begun;
  mHistory->OnAdd([&] {
    mHistory->OnAdd({});
    begun.set_value();
    listens = !mSessions->WaitUntilNobodyListens();
  });
  mWorker->Sync();
  std::thread time([this] { mClock->Advance(1000ms); });
  time.join();
  begun.get_future().wait();
  mConnector.reset();
  EXPECT_FALSE(listens);
  EXPECT_EQ(Lamp(), "Yellow/On");
}

}  // namespace
