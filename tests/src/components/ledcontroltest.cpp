#include <array>
#include <chrono>
#include <future>
#include <stdexcept>
#include <thread>

#include "src/components/blinkcode.h"
#include "src/components/ledcontrol.h"
#include "tests/src/components/lampfixture.h"

namespace {

using EOperation = CFakeSysfs::EOperation;
using Log::ELogLevel;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto kColors = std::to_array<const char*>({"Red", "Green", "Blue", "Yellow", "White"});
constexpr auto kModes = std::to_array<const char*>(
    {"On", "Off", "Pulsating", "Flashing", "Blink1", "Blink2", "Blink3", "Blink4", "Blink5",
     "Blink6", "Blink7", "Blink8", "Blink9", "Blink10"});

using ANewLedControl = CLampFixture;

class ALedControl : public CLampFixture {
 protected:
  ALedControl() { mHistory->Take(); }

  const std::shared_ptr<CLedControl> mControl = CreateLedControl();
};

TEST_F(ANewLedControl, LightsTheLampAlsoWhenAChannelCannotBeSetUp) {
  mChannels.at("green")->Fail(EOperation::EWrite, "trigger");
  mChannels.at("red")->Fail(EOperation::EWrite, "pattern");
  CreateLedControl();
  EXPECT_EQ(mChannels.at("blue")->Value("trigger"), "none");
  EXPECT_EQ(Lamp(), "Yellow/On");
  EXPECT_EQ(mLog.Count(ELogLevel::EError,
                       "(../feedback/src/components/ledcontrol:33) Failed to setup LEDs"),
            1u);
}

TEST_F(ALedControl, ShowsAndReportsEveryColourInEveryMode) {
  // Not the lamp of the start, which would be no change for one of them.
  mControl->SetMainLed(ELedColor::EWhite, ELedMode::EBlink10);
  for (size_t color = 0; color < kColors.size(); ++color) {
    for (size_t mode = 0; mode < kModes.size(); ++mode) {
      const std::string state = std::string(kColors[color]) + "/" + kModes[mode];
      SCOPED_TRACE(state);
      EXPECT_TRUE(mControl->SetMainLed(static_cast<ELedColor>(color), static_cast<ELedMode>(mode)));
      EXPECT_EQ(Lamp(), kModes[mode] == std::string("Off") ? "Dark" : state);
      EXPECT_EQ(Reports().back(), state);
    }
  }
}

TEST_F(ALedControl, ScalesTheBrightnessAboveItsFloorAndThePulsatingLimits) {
  const struct {
    ELedMode mode;
    uint8_t brightness;
    uint8_t floor;
    const char* limits;
  } rows[] = {
      {ELedMode::EOn, 5, 0, "0..50"},          {ELedMode::EOn, 5, 4, "0..50"},
      {ELedMode::EOn, 10, 30, "0..300"},       {ELedMode::EOn, 0, 100, "0..1000"},
      {ELedMode::EPulsating, 5, 0, "3..76"},   {ELedMode::EPulsating, 7, 0, "3..76"},
      {ELedMode::EPulsating, 8, 0, "3..80"},   {ELedMode::EPulsating, 50, 0, "3..500"},
      {ELedMode::EPulsating, 5, 10, "3..100"}, {ELedMode::EBlink1, 100, 0, "0..1000"},
  };
  for (const auto& [mode, brightness, floor, limits] : rows) {
    SCOPED_TRACE(limits);
    const auto control = CreateLedControl();
    EXPECT_TRUE(control->SetMainLed(ELedColor::EWhite, mode));
    EXPECT_TRUE(control->SetMinimumBrightness(floor));
    EXPECT_TRUE(control->SetBrightness(brightness));
    EXPECT_EQ(Limits(), limits);
    EXPECT_EQ(control->GetBrightness(), brightness);
  }
}

TEST_F(ALedControl, TouchesNoFurtherChannelAfterOneThatFailed) {
  const struct {
    const char* name;
    EOperation operation;
    const char* attribute;
    const char* lastLine;
  } rows[] = {
      {"limit", EOperation::EWrite, "max_pattern_brightness",
       "green max_pattern_brightness=1000 failed"},
      {"unreadable limit", EOperation::ERead, "min_pattern_brightness",
       "red min_pattern_brightness=0"},
      {"pattern", EOperation::EWrite, "pattern", "green pattern=1000 167 1000 0 0 167 0 0  failed"},
  };
  for (const auto& [name, operation, attribute, lastLine] : rows) {
    SCOPED_TRACE(name);
    mControl->SetMainLed(ELedColor::EBlue, ELedMode::EOn);
    mHistory->Take();
    mChannels.at("green")->Fail(operation, attribute);
    EXPECT_FALSE(mControl->SetMainLed(ELedColor::EWhite, ELedMode::EFlashing));
    EXPECT_EQ(mHistory->Take().back(), lastLine);
    EXPECT_EQ(Reports().back(), "White/Flashing");

    // The state counts as set: the same again is nothing new, the next one works.
    EXPECT_TRUE(mControl->SetMainLed(ELedColor::EWhite, ELedMode::EFlashing));
    EXPECT_THAT(mHistory->Take(), IsEmpty());
    EXPECT_TRUE(mControl->SetMainLed(ELedColor::EWhite, ELedMode::EOn));
    EXPECT_EQ(Lamp(), "White/On");
  }
}

TEST_F(ALedControl, LightsNothingNewWhenTheOldColourCannotBeSwitchedOff) {
  mChannels.at("red")->Fail(EOperation::EWrite, "pattern");
  EXPECT_FALSE(mControl->SetMainLed(ELedColor::EBlue, ELedMode::EOn));
  EXPECT_THAT(mHistory->Take(),
              ElementsAre("red min_pattern_brightness=0", "red pattern=0 0 0 0 failed"));
  EXPECT_THAT(Reports(), ElementsAre("Blue/On"));
}

TEST_F(ALedControl, GoesOnPulsatingWhenItIsSetToOnAtBrightnessZero) {
  mControl->SetMainLed(ELedColor::EBlue, ELedMode::EPulsating);
  mControl->SetBrightness(0);
  EXPECT_FALSE(mControl->SetMainLed(ELedColor::EBlue, ELedMode::EOn));
  EXPECT_EQ(Lamp(), "Blue/Pulsating");
  EXPECT_TRUE(mControl->SetMainLed(ELedColor::EBlue, ELedMode::EOn));
  EXPECT_EQ(Lamp(), "Blue/Pulsating");
  EXPECT_TRUE(mControl->SetMainLed(ELedColor::EGreen, ELedMode::EOn));
  EXPECT_EQ(Lamp(), "Green/On");
}

TEST_F(ALedControl, RefusesUnknownColoursAndModesUntouched) {
  EXPECT_THROW(mControl->SetMainLed(ELedColor(5), ELedMode::EOn), std::out_of_range);
  EXPECT_THROW(mControl->SetMainLed(ELedColor(-1), ELedMode::EOn), std::out_of_range);
  EXPECT_THROW(mControl->SetMainLed(ELedColor::ERed, ELedMode(14)), std::out_of_range);
  EXPECT_THAT(mHistory->Take(), IsEmpty());
  EXPECT_THAT(Reports(), IsEmpty());
  EXPECT_TRUE(mControl->SetMainLed(ELedColor::ERed, ELedMode::EOn));
}

TEST_F(ALedControl, StampsItsReportWithTheTimeOfTheChange) {
  const auto before = std::chrono::system_clock::now();
  mControl->SetMainLed(ELedColor::EBlue, ELedMode::EOn);
  const auto after = std::chrono::system_clock::now();
  const auto sent = mDiagnostics->Sent();
  ASSERT_EQ(sent.size(), 1u);
  const ipc::MTimestamp& stamp = sent.front().timestamp();
  const std::chrono::sys_time<std::chrono::microseconds> time(
      std::chrono::seconds(stamp.seconds()) + std::chrono::microseconds(stamp.microseconds()));
  EXPECT_GE(time, std::chrono::floor<std::chrono::microseconds>(before));
  EXPECT_LE(time, after);
}

// Takes no signal before it is let go.
class CHangingDiagnostics : public CFakeDiagnostics {
 public:
  ipc::MResult SendSignal(const ipc::MDiagnosticsSignal& signal) override {
    if (!mHung) {
      mHung = true;
      mReached.set_value();
      mRelease.get_future().wait();
    }
    return CFakeDiagnostics::SendSignal(signal);
  }

  std::promise<void> mReached;
  std::promise<void> mRelease;

 private:
  bool mHung = false;
};

TEST_F(ALedControl, GoesOnWhileAReportHangsAndReportsInTheOrderOfTheChanges) {
  const auto diagnostics = std::make_shared<CHangingDiagnostics>();
  CDiagnosticsCommClient::Initialize(diagnostics);
  std::thread hung([&] { mControl->SetMainLed(ELedColor::EBlue, ELedMode::EOn); });
  diagnostics->mReached.get_future().wait();

  EXPECT_TRUE(mControl->SetMainLed(ELedColor::ERed, ELedMode::EFlashing));
  EXPECT_TRUE(mControl->SetMainLed(ELedColor::EGreen, ELedMode::EOn));
  EXPECT_TRUE(mControl->SetBrightness(50));
  EXPECT_EQ(Lamp(), "Green/On");
  EXPECT_EQ(Limits(), "0..500");
  EXPECT_THAT(diagnostics->Sent(), IsEmpty());

  diagnostics->mRelease.set_value();
  hung.join();
  std::vector<std::string> values;
  for (const auto& signal : diagnostics->Sent()) {
    values.push_back(signal.data(0).string_value());
  }
  EXPECT_THAT(values, ElementsAre("Blue/On", "Red/Flashing", "Green/On"));
}

TEST_F(ALedControl, NeverMixesTheWritesOfTwoOperations) {
  mControl->SetMainLed(ELedColor::EWhite, ELedMode::EOn);
  mHistory->Take();
  mHistory->OnAdd(std::this_thread::yield);
  const auto write = [this](uint8_t percent) {
    for (int round = 0; round < 200; ++round) {
      mControl->SetBrightness(percent);
    }
  };
  AtOnce({[&] { write(10); }, [&] { write(90); }});

  const std::vector<std::string> lines = mHistory->Take();
  ASSERT_EQ(lines.size(), 2u * 200 * 6);
  for (size_t first = 0; first < lines.size(); first += 6) {
    const std::string maximum = lines[first] == "red max_pattern_brightness=100" ? "100" : "900";
    EXPECT_EQ(lines[first], "red max_pattern_brightness=" + maximum);
    EXPECT_EQ(lines[first + 2], "green max_pattern_brightness=" + maximum);
    EXPECT_EQ(lines[first + 4], "blue max_pattern_brightness=" + maximum);
  }
}

TEST_F(ALedControl, LightsOneColourWhenTwoAreAskedForAtOnce) {
  mHistory->OnAdd(std::this_thread::yield);
  for (int round = 0; round < 100; ++round) {
    mControl->SetMainLed(ELedColor::EYellow, ELedMode::EOn);
    AtOnce({[this] { mControl->SetMainLed(ELedColor::ERed, ELedMode::EOn); },
            [this] { mControl->SetMainLed(ELedColor::EBlue, ELedMode::EFlashing); }});
    ASSERT_THAT(Lamp(), testing::AnyOf("Red/On", "Blue/Flashing"));
    ASSERT_EQ(Reports().back(), Lamp());
  }
}

TEST(ABlinkCode, HasNoMorePulsesThanSlots) {
  const LogCapture log;
  EXPECT_FALSE(BlinkCode(11));
  EXPECT_EQ(log.Count(ELogLevel::EError,
                      "(../feedback/src/components/ledcontrol:271) Error coding 11 exceeds the "
                      "number of slots 10."),
            1u);
}

}  // namespace
