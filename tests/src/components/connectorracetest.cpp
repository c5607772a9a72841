// What the connector promises when several threads use it, and after any history.
#include <functional>
#include <future>
#include <random>
#include <thread>

#include "tests/src/components/connectorfixture.h"

namespace {

using namespace std::chrono_literals;

class ABusyConnector : public CConnectorFixture {
 protected:
  // After each write another thread gets its chance to come in between.
  ABusyConnector() { mHistory->OnAdd(std::this_thread::yield); }
};

// The precedence once more, as plainly as it can be said.
struct CModel {
  bool enabled = false;
  bool event = false;
  int state = 0;
  std::vector<int> errors;
  std::string lamp = "Yellow/On";
  int floor = 100;

  void Update() {
    if (event) {
      return;
    }
    if (!errors.empty()) {
      lamp = errors.front() == 1002   ? "Red/Blink1"
             : errors.front() == 1004 ? "Red/Blink3"
                                      : "Red/Blink2";
    } else if (!enabled) {
      ShowDisabled();
    } else if (state != kChanging) {
      lamp = kStateLamps[static_cast<size_t>(state)];
    }
  }

  void ShowDisabled() {
    floor = 100;
    lamp = "Yellow/On";
  }

  std::string Limits() const {
    const int maximum = std::max(5, floor) * 10;
    return lamp.ends_with("Pulsating") ? "3.." + std::to_string(std::max(76, maximum))
                                       : "0.." + std::to_string(maximum);
  }
};

TEST_F(ABusyConnector, ShowsWhatThePrecedenceGivesAfterAnyHistory) {
  std::mt19937 random(4711);
  const auto pick = [&random](int count) { return static_cast<int>(random() % unsigned(count)); };
  CModel model;
  for (int step = 0; step < 3000; ++step) {
    const int error = 1000 + pick(3) * 2;
    const auto known = std::ranges::find(model.errors, error);
    switch (pick(7)) {
      case 0:
        mConnector->Enable();
        model.enabled = true;
        model.floor = 0;
        model.Update();
        break;
      case 1:
        mConnector->Disable();
        model.enabled = false;
        model.ShowDisabled();
        break;
      case 2:
        mConnector->AddError(error);
        if (known == model.errors.end()) {
          model.errors.push_back(error);
        }
        model.floor = 10;
        model.Update();
        break;
      case 3:
        mConnector->RemoveError(error);
        if (known != model.errors.end()) {
          model.errors.erase(known);
          model.floor = model.errors.empty() ? 0 : model.floor;
          model.Update();
        }
        break;
      case 4: {
        const int event = pick(3);
        mConnector->ShowEvent(static_cast<EConnectorEvent>(event), 1000ms);
        model.event = true;
        model.lamp = std::array{"Green", "Red", "White"}[static_cast<size_t>(event)] +
                     std::string("/Flashing");
        model.floor = event == 2 ? 100 : 0;
        break;
      }
      case 5:
        Advance(1000ms);
        if (model.event) {
          model.event = false;
          model.floor = 0;
          model.Update();
        }
        break;
      default:
        model.state = pick(static_cast<int>(kStateLamps.size()));
        mSessions->Notify(model.state);
        model.Update();
        break;
    }
    ASSERT_EQ(Lamp(), model.lamp) << "step " << step;
    ASSERT_EQ(Limits(), model.Limits()) << "step " << step;
  }
}

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
