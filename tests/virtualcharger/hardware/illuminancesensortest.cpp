#include <gtest/gtest.h>

#include <cerrno>
#include <functional>
#include <thread>

#include "tests/support/manualclock.h"
#include "virtualcharger/hardware/illuminancesensor.h"

namespace {

using std::chrono::milliseconds;

const std::string kInput = "in_illuminance_input";
const std::string kIntegrationTime = "in_illuminance_integration_time";

class AnIlluminanceSensor : public ::testing::Test {
 protected:
  static std::string Read(CIlluminanceSensor& sensor, const std::string& attribute) {
    std::string text;
    const int error = sensor.Read(attribute, text);
    return error == 0 ? text : "error " + std::to_string(error);
  }

  // Of a reader that waits until this point of time, when it has been let go.
  std::string ReadingAfter(milliseconds time, const std::function<void()>& letGo) {
    std::string text;
    std::thread reader([&] { text = Read(mSensor, kInput); });
    EXPECT_TRUE(mClock->WaitForWaiter(mClock->Now() + time));
    letGo();
    reader.join();
    return text;
  }

  std::shared_ptr<ManualClock> mClock = std::make_shared<ManualClock>();
  CIlluminanceSensor mSensor{mClock};
};

TEST_F(AnIlluminanceSensor, ReadsAsTheKernelPrintsIt) {
  CIlluminanceSensor quick(mClock, true);
  quick.SetLux(104);
  EXPECT_EQ(Read(quick, kInput), "104.000000\n");
  EXPECT_EQ(Read(quick, "in_illuminance_raw"), "10400\n");
  EXPECT_EQ(Read(quick, kIntegrationTime), "0.800000\n");
  quick.SetLux(83865.6);
  EXPECT_EQ(Read(quick, kInput), "83865.600000\n");
  EXPECT_EQ(Read(quick, "brightness"), "error " + std::to_string(ENOENT));
}

TEST_F(AnIlluminanceSensor, TellsTheLightAtTheEndOfItsIntegrationTime) {
  mSensor.SetLux(1);
  EXPECT_EQ(ReadingAfter(milliseconds(1028),
                         [&] {
                           mClock->Advance(milliseconds(1027));
                           mSensor.SetLux(2);
                           mClock->Advance(milliseconds(1));
                         }),
            "2.000000\n");
  ASSERT_EQ(mSensor.Write(kIntegrationTime, "0.1"), 0);
  EXPECT_EQ(ReadingAfter(milliseconds(159), [&] { mClock->Advance(milliseconds(159)); }),
            "2.000000\n");
}

TEST_F(AnIlluminanceSensor, LetsItsReadersGoWhenItCloses) {
  ReadingAfter(milliseconds(1028), [&] { mSensor.Close(); });
}

TEST_F(AnIlluminanceSensor, TakesTheIntegrationTimesThatItHas) {
  const std::pair<const char*, int> cases[] = {
      {"0.1", 0}, {"0.800000\n", 0}, {"0.5", EINVAL}, {"0.8s", EINVAL}, {"", EINVAL}};
  for (const auto& [text, error] : cases) {
    EXPECT_EQ(mSensor.Write(kIntegrationTime, text), error) << text;
  }
  EXPECT_EQ(Read(mSensor, kIntegrationTime), "0.800000\n");
  EXPECT_EQ(mSensor.Write(kInput, "1"), EACCES);
}

}  // namespace
