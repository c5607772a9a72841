#include <algorithm>
#include <random>

#include "src/components/connector.h"
#include "tests/src/components/connectorfixture.h"

namespace {

using namespace std::chrono_literals;
using Log::ELogLevel;
using testing::ElementsAre;
using testing::IsEmpty;

class AConnector : public CConnectorFixture {};

// The precedence once more, as plainly as it can be said.
struct CModel {
  bool enabled = false;
  std::chrono::milliseconds event{0};  // what is left of it
  int state = 0;
  std::vector<int> errors;
  int floor = 100;
  std::vector<std::string> lamps{"Yellow/On"};

  void Show(const std::string& lamp) {
    if (lamp != lamps.back()) {
      lamps.push_back(lamp);
    }
  }

  void Update() {
    if (event > 0ms) {
      return;
    }
    if (!errors.empty()) {
      Show(errors.front() == 1002   ? "Red/Blink1"
           : errors.front() == 1004 ? "Red/Blink3"
                                    : "Red/Blink2");
    } else if (!enabled) {
      ShowDisabled();
    } else if (state < 0 || state >= std::ssize(kStateLamps)) {
      Show("Green/On");
    } else if (state != kChanging) {
      Show(kStateLamps[static_cast<size_t>(state)]);
    }
  }

  void ShowDisabled() {
    floor = 100;
    Show("Yellow/On");
  }

  std::string Limits() const {
    const int maximum = std::max(5, floor) * 10;
    return lamps.back().ends_with("Pulsating") ? "3.." + std::to_string(std::max(76, maximum))
                                               : "0.." + std::to_string(maximum);
  }
};

TEST_F(AConnector, ShowsWhatThePrecedenceGivesAfterAnyHistory) {
  std::mt19937 random(4711);
  const auto pick = [&random](int count) { return static_cast<int>(random() % unsigned(count)); };
  CModel model;
  for (int step = 0; step < 6000; ++step) {
    ASSERT_EQ(Lamp(), model.lamps.back()) << "before step " << step;
    ASSERT_EQ(Limits(), model.Limits()) << "before step " << step;
    const int error = 1000 + pick(3) * 2;
    const auto known = std::ranges::find(model.errors, error);
    switch (pick(8)) {
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
        model.event = (1 + pick(2)) * 500ms;
        mConnector->ShowEvent(static_cast<EConnectorEvent>(event), model.event);
        model.Show(std::array{"Green", "Red", "White"}[static_cast<size_t>(event)] +
                   std::string("/Flashing"));
        model.floor = event == 2 ? 100 : 0;
        break;
      }
      case 5:
      case 6: {
        const auto time = std::array{1ms, 499ms, 500ms}[static_cast<size_t>(pick(3))];
        Advance(time);
        if (model.event > 0ms && (model.event -= time) <= 0ms) {
          model.floor = 0;
          model.Update();
        }
        break;
      }
      default:
        model.state = pick(15) - 1;
        mSessions->Notify(model.state);
        model.Update();
        break;
    }
  }
  model.lamps.erase(model.lamps.begin());
  EXPECT_EQ(Reports(), model.lamps) << "each change once";
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

TEST_F(AConnector, LetsNobodyCallItAfterItsEnd) {
  mConnector->Enable();
  mConnector->ShowEvent(EConnectorEvent::EIdentify, 1000ms);
  mConnector.reset();
  mHistory->Take();
  EXPECT_FALSE(mSessions->Notify(kCharging));
  Advance(2000ms);
  EXPECT_THAT(mHistory->Take(), IsEmpty());
}

}  // namespace
