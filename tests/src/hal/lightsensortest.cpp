#include <filesystem>
#include <stdexcept>

#include "src/hal/opt3001.h"
#include "src/hal/vcnl4001.h"
#include "tests/src/hal/halfixture.h"
#include "tests/support/temporarydirectory.h"

namespace {

using Log::ELogLevel;
using testing::ElementsAre;
using namespace std::chrono_literals;

// The sensor's device is a directory of files. The clock moves only where a test says so: a sensor
// that waited out its sleep as it goes would never end.
class ALightSensor : public CHalFixture {
 protected:
  ALightSensor() { Set("integration_time", ""); }

  void Set(const std::string& attribute, const std::string& text) const {
    mDirectory.WriteFile("iio:device0/in_illuminance_" + attribute, text);
  }

  // Enabled.
  std::unique_ptr<COpt3001> Opt3001(uint32_t integrationTime = 1) const {
    auto sensor = std::make_unique<COpt3001>(mDirectory.Path(), EIntegrationTime(integrationTime),
                                             2000ms, mAccess, 3000, 80000, mClock);
    sensor->Enable();
    return sensor;
  }

  // Waits until the sensor sleeps for this long from now.
  bool Sleeps(std::chrono::milliseconds duration) const {
    return mClock->WaitForWaiter(mClock->Now() + duration);
  }

  const std::shared_ptr<CSysfsAccess> mAccess = std::make_shared<CSysfsAccess>();
  const TemporaryDirectory mDirectory;
};

TEST_F(ALightSensor, UsesTheFirstOfItsTenDevices) {
  const auto base = (mDirectory.Path() / "light").string();
  const CVcnl4001 withoutBase(base, mAccess, 3000, 80000);
  // The number of a device is what it measures, in percent.
  for (const auto& [device, expected] : {std::pair(10, 0), {9, 9}, {3, 3}, {7, 3}}) {
    mDirectory.WriteFile("light/iio:device" + std::to_string(device) + "/in_illuminance_raw",
                         std::to_string(3000 + 770 * device));
    CVcnl4001 sensor(base, mAccess, 3000, 80000);
    sensor.Enable();
    sensor.Disable();
    EXPECT_EQ(sensor.GetIlluminancePercentage(), expected);
  }
  EXPECT_THAT(TakeErrors(),
              ElementsAre("(src/hal/lightsensor:32) Invalid light sensor device path: " + base,
                          "(src/hal/lightsensor:45) No light sensor device found!",
                          "(src/hal/vcnl4001:60) Failed to get input value for Vcnl4001"));
}

TEST_F(ALightSensor, KeepsItsPercentageWhereTheTextIsNoMeasuredValue) {
  CVcnl4001 sensor(mDirectory.Path(), mAccess, 3000, 80000);
  Set("raw", "99");
  sensor.Enable();
  const std::pair<const char*, int> rows[] = {{"80000", 100},      {"-0.4", 0},   {"79999", 99},
                                              {"3769.4", 0},       {"3769.5", 1}, {"4e9", 100},
                                              {" 41500 nW\n", 50}, {"-inf", 50},  {"1e30", 50}};
  for (const auto& [text, percentage] : rows) {
    Set("raw", text);
    EXPECT_EQ(sensor.GetIlluminancePercentage(), percentage) << text;
  }
  EXPECT_EQ(TakeErrors().size(), 2u);
  Set("raw", "");
  EXPECT_THROW(sensor.GetIlluminancePercentage(), std::invalid_argument);
  EXPECT_EQ(Reports(110).front(), 99);
}

TEST_F(ALightSensor, IsReadOnceAPeriodAndAfterAFailureEveryFiveSeconds) {
  Set("input", "250.5\n");
  const auto sensor = Opt3001(0);
  auto sleep = 1870ms;
  ASSERT_TRUE(Sleeps(sleep));
  int before = 35;
  // 120 times the first is 11469.4995, which a float would round up before its time.
  const std::tuple<const char*, int, std::chrono::milliseconds> rows[] = {
      {"95.579163", 10, 1870ms}, {"345.8375", 50, 1870ms}, {"-5", 50, 5000ms}, {"nan", 50, 5000ms},
      {"833.31", 100, 1870ms},   {"833.325", 100, 1870ms}, {"0", 0, 1870ms}};
  for (const auto& [text, percentage, next] : rows) {
    Set("input", text);
    mClock->Advance(sleep - 1ms);
    EXPECT_EQ(sensor->GetIlluminancePercentage(), before);
    mClock->Advance(1ms);
    ASSERT_TRUE(Sleeps(next)) << text;
    EXPECT_EQ(sensor->GetIlluminancePercentage(), percentage) << text;
    before = percentage;
    sleep = next;
  }
  const std::string unread = "(src/hal/opt3001:109) Failed to get input value for Opt3001";
  EXPECT_THAT(TakeErrors(), ElementsAre(unread, unread));
  // The first value that is reported is 100000 above -1; the fall after it is one less.
  EXPECT_THAT(Reports(110), ElementsAre(99999));
}

TEST_F(ALightSensor, SleepsForWhatItsIntegrationTimeLeavesOfThePeriod) {
  Set("input", "0");
  const auto attribute = mDirectory.Path() / "iio:device0/in_illuminance_integration_time";
  std::string text;
  for (const auto& [code, sleep, written] :
       {std::tuple(0, 1870ms, "0.1"), {1, 1100ms, "0.8"}, {2, 5000ms, "0.8"}}) {
    const auto sensor = Opt3001(static_cast<uint32_t>(code));
    EXPECT_TRUE(Sleeps(sleep));
    EXPECT_TRUE(mAccess->Read(attribute, text));
    EXPECT_EQ(text, written);
  }
  std::filesystem::remove(attribute);
  Opt3001();
  EXPECT_THAT(TakeErrors(),
              ElementsAre("(src/hal/opt3001:140) Unsupported integration time enum: 2",
                          "(src/hal/opt3001:132) Failed to write opt3001 integration time: 0.8"));
}

TEST_F(ALightSensor, EndsItsReadingsWithTheFirstOneThatIsDueAfterItWasDisabled) {
  Set("input", "0");
  const auto sensor = Opt3001();
  ASSERT_TRUE(Sleeps(1100ms));
  sensor->Enable();
  EXPECT_EQ(
      mLog.Lines().back(),
      (LogCapture::Line{ELogLevel::EWarning, "(src/hal/opt3001:55) Opt3001 is already enabled!"}));
  sensor->Disable();
  EXPECT_TRUE(Sleeps(1100ms));
  // A chain that was begun anew meanwhile ends as well.
  sensor->Enable();
  sensor->Disable();
  mLog.Clear();
  Log::SetLogLevel(ELogLevel::ETrace);
  mClock->Advance(1100ms);
  sensor->Sync();
  EXPECT_EQ(mLog.Count(ELogLevel::ETrace, "COpt3001::PollIlluminance"), 2u);
  EXPECT_EQ(mLog.Lines().size(), 2u);
  sensor->Disable();
  EXPECT_EQ(mLog.Lines().back(),
            (LogCapture::Line{ELogLevel::ETrace, "(src/hal/opt3001:69) Opt3001 is not enabled!"}));
  sensor->Enable();
  EXPECT_TRUE(Sleeps(1100ms));
}

TEST_F(ALightSensor, EndsItsReadingsWithOneThatIsNoNumberOrCannotBeReported) {
  mDiagnostics->Fail("down");
  for (const auto& [text, error] : {std::pair("1e300", "stof"), {"1000", "down"}}) {
    Set("input", text);
    const auto sensor = Opt3001();
    ASSERT_TRUE(mLog.WaitFor(ELogLevel::EError, std::string("Worker call failed: ") + error));
    Set("input", "250.5");
    mClock->Advance(10s);
    sensor->Sync();
    EXPECT_EQ(sensor->GetIlluminancePercentage(), 0);
    EXPECT_EQ(TakeErrors().size(), 1u);
  }
}

}  // namespace
