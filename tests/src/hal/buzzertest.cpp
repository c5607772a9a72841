#include <stdexcept>

#include "src/hal/buzzer.h"
#include "tests/src/hal/halfixture.h"
#include "tests/support/fakesysfs.h"

namespace {

using EOperation = CFakeSysfs::EOperation;
using testing::ElementsAre;
using namespace std::chrono_literals;

class CFakeToneDevice : public IToneDevice {
 public:
  int Open(const char* path) override {
    mHistory.Add(std::string("open ") + path);
    return mDescriptor;
  }
  int SetTone(int descriptor, int divisor) override {
    mHistory.Add(std::to_string(divisor) + " to " + std::to_string(descriptor));
    return mResult;
  }
  void Close(int descriptor) override { mHistory.Add("close " + std::to_string(descriptor)); }

  CWriteHistory mHistory;

  // Changed only before the buzzer uses the device.
  int mDescriptor = 7;
  int mResult = 0;
};

class ABuzzer : public CHalFixture {
 protected:
  void Elapse(std::chrono::milliseconds duration) {
    mBuzzer->Sync();
    mClock->Advance(duration);
    mBuzzer->Sync();
  }

  void ExpectTone(const std::string& divisor) {
    EXPECT_THAT(mTone->mHistory.Take(),
                ElementsAre("open /dev/tty0", divisor + " to 7", "close 7"));
  }

  const std::shared_ptr<CWriteHistory> mHistory = std::make_shared<CWriteHistory>();
  const std::shared_ptr<CFakeSysfs> mSysfs = std::make_shared<CFakeSysfs>("beeper", mHistory);
  const std::shared_ptr<CFakeToneDevice> mTone = std::make_shared<CFakeToneDevice>();
  std::unique_ptr<CBuzzer> mBuzzer = std::make_unique<CBuzzer>(mSysfs, mTone, mClock);
};

TEST_F(ABuzzer, BeepsFor300MillisecondsAndEndsASecondBeepWithTheFirst) {
  mBuzzer->Beep();
  Elapse(200ms);
  ExpectTone("298");
  mBuzzer->Beep();
  Elapse(99ms);
  ExpectTone("298");
  Elapse(1ms);
  ExpectTone("0");
  Elapse(200ms);
  ExpectTone("0");
  EXPECT_THAT(Reports(112), ElementsAre(1, 1, 0, 0));
}

TEST_F(ABuzzer, LeavesTheToneOffWhenItGoesInABeep) {
  mBuzzer->Beep();
  mBuzzer->Beep();
  mTone->mHistory.Take();
  mDiagnostics->Fail("down");
  mBuzzer.reset();
  mClock->Advance(1s);
  ExpectTone("0");
  EXPECT_THAT(TakeErrors(),
              ElementsAre("(src/hal/buzzer:135) Failed to send diagnostics data. Error: 'down'."));
}

TEST_F(ABuzzer, ReportsNoToneThatTheDeviceDidNotTake) {
  mTone->mDescriptor = -1;
  mBuzzer->Beep();
  Elapse(300ms);
  EXPECT_THAT(mTone->mHistory.Take(), ElementsAre("open /dev/tty0", "open /dev/tty0"));
  mTone->mDescriptor = 7;
  mTone->mResult = -5;
  mBuzzer->Beep();
  ExpectTone("298");
  mTone->mHistory.OnAdd([] { throw std::runtime_error("no device"); });
  mBuzzer.reset();
  EXPECT_THAT(Reports(112), ElementsAre());
  const std::string unopened =
      "(src/hal/buzzer:111) Could not open tty device /dev/tty0, error: -1";
  EXPECT_THAT(
      TakeErrors(),
      ElementsAre(unopened, unopened,
                  "(src/hal/buzzer:117) Could not write buzzer value 298 to fd 7, error: -5",
                  "(src/hal/buzzer:58) Disabling buzzer failed. Exception: no device"));
}

TEST_F(ABuzzer, ReadsAVolumeOfDigitsOnlyAndWritesPlainDecimal) {
  uint8_t volume = 99;
  for (const std::string text : {"-1", "7 ", "0x7"}) {
    mSysfs->Set("volume", text);
    EXPECT_FALSE(mBuzzer->ReadVolume(volume));
    EXPECT_THAT(TakeErrors(), ElementsAre("(src/hal/buzzer:85) Output '" + text +
                                          "' contains unexpected non-numeric value."));
  }
  mSysfs->Set("volume", "");
  EXPECT_THROW(mBuzzer->ReadVolume(volume), std::invalid_argument);
  mSysfs->Fail(EOperation::ERead, "volume");
  EXPECT_FALSE(mBuzzer->ReadVolume(volume));
  EXPECT_THAT(TakeErrors(), ElementsAre("(src/hal/buzzer:77) Failed to read buzzer volume level"));
  EXPECT_EQ(volume, 99);
  mSysfs->Set("volume", "300");
  EXPECT_TRUE(mBuzzer->ReadVolume(volume));
  EXPECT_EQ(volume, 44);
  EXPECT_TRUE(mBuzzer->WriteVolume(0));
  mSysfs->Fail(EOperation::EWrite, "volume");
  EXPECT_FALSE(mBuzzer->WriteVolume(255));
  EXPECT_THAT(mHistory->Take(), ElementsAre("beeper volume=0", "beeper volume=255 failed"));
}

}  // namespace
