#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>

#include "platform/rpc/communicationexception.h"
#include "src/components/brightnesscontrol.h"
#include "src/components/feedbackconfig.h"
#include "src/components/feedbackhsmactionhandler.h"
#include "tests/support/logcapture.h"
#include "tests/support/manualclock.h"

namespace {

using namespace std::chrono_literals;
using Values = std::map<std::string, Json::Value>;

// A section of the store in memory. Its handlers run on the thread that sets a value.
class CFakeConfig : public KvConfig::IConfig {
 public:
  explicit CFakeConfig(Values values) : mValues(std::move(values)) {}
  bool GetBool(const std::string& key, bool other) const override {
    return Get(key, other).asBool();
  }
  int GetInt(const std::string& key, int other) const override { return Get(key, other).asInt(); }
  std::string GetString(const std::string& key, const std::string& other) const override {
    return Get(key, other).asString();
  }
  KvConfig::Subscription Subscribe(const std::string&, const std::string& key,
                                   KvConfig::ValueHandler handler,
                                   KvConfig::EMatch match) override {
    mHandlers.emplace_back(key + (match == KvConfig::EMatch::EWhole ? "$" : ""),
                           std::move(handler));
    return nullptr;
  }
  void Set(const std::string& name, const Json::Value& value) {
    {
      const std::lock_guard lock(mMutex);
      mValues[name] = value;
    }
    for (const auto& [key, handler] : mHandlers) {
      if ((name + "$").starts_with(key)) {
        handler(value);
      }
    }
  }

 private:
  Json::Value Get(const std::string& key, const Json::Value& other) const {
    const std::lock_guard lock(mMutex);
    return mValues.contains(key) ? mValues.at(key) : other;
  }

  mutable std::mutex mMutex;
  Values mValues;  // guarded by mMutex
  std::vector<std::pair<std::string, KvConfig::ValueHandler>> mHandlers;
};

// What the handler steers. Each writes what it is told as a line of the log, and fails.
struct CFakeConnector : IConnector {
  explicit CFakeConnector(int number) : mNumber(number) {}
  void Enable() override { LOG(Info, "connector{} enable", mNumber); }
  void Disable() override { LOG(Info, "connector{} disable", mNumber); }
  void ShowEvent(EConnectorEvent event, std::chrono::milliseconds time) override {
    LOG(Info, "connector{} {} for {}", mNumber, static_cast<int>(event), time.count());
  }
  void AddError(int32_t error) override { LOG(Info, "connector{} +{}", mNumber, error); }
  void RemoveError(int32_t error) override { LOG(Info, "connector{} -{}", mNumber, error); }
  const int mNumber;
};

struct CFakeMeter : IMeter {
  ipc::MResult SetDisplayBrightness(const ipc::MDisplayBrightness& brightness) override {
    LOG(Info, "meter {}", brightness.percentage());
    return mReply();
  }
  std::function<ipc::MResult()> mReply = [] { return ipc::MResult(); };
};

struct CFakeHardware : ILedControl, ILightSensor, IBuzzer, IHsmInterface {
  bool SetBrightness(uint8_t percent) override {
    LOG(Info, "led {}", percent);
    return false;
  }
  bool SetMainLed(ELedColor, ELedMode) override { return false; }
  uint8_t GetBrightness() const override { return 0; }
  bool SetMinimumBrightness(uint8_t) override { return false; }
  bool ResetMinimumBrightness() override { return false; }

  void Enable() override { LOG(Info, "sensor on"); }
  void Disable() override { LOG(Info, "sensor off"); }
  uint8_t GetIlluminancePercentage() override { return mLight; }
  std::atomic<uint8_t> mLight{0};

  void Beep() override { LOG(Info, "beep"); }
  bool ReadVolume(uint8_t&) override { return false; }
  bool WriteVolume(uint8_t volume) override {
    LOG(Info, "volume {}", volume);
    return false;
  }

  void PostEvent(std::shared_ptr<IHsmEvent> event) override { LOG(Info, "{}", event->GetName()); }
  void Run() override {}
  void Stop() override {}
  bool IsRunning() const override { return true; }
};

class AnActionHandler : public testing::Test {
 protected:
  void Create(const Values& fitted, const Values& settings = {}) {
    mSettings = std::make_shared<CFakeConfig>(settings);
    mHandler = std::make_unique<CFeedbackHsmActionHandler>(
        std::vector<std::shared_ptr<ILedControl>>{mHardware},
        std::vector<std::shared_ptr<IConnector>>{std::make_shared<CFakeConnector>(1),
                                                 std::make_shared<CFakeConnector>(2)},
        std::make_shared<CBrightnessControl>(), mHardware, mHardware, mSettings,
        std::make_shared<CFakeConfig>(fitted), std::make_shared<CFeedbackConfig>(),
        std::vector<std::shared_ptr<IMeter>>{mMeter, std::make_shared<CFakeMeter>()}, mClock);
    mHandler->SetMachine(mHardware.get());
  }

  void Monitor(const Values& fitted, const Values& settings = {}) {
    Create(fitted, settings);
    mHandler->IntInitialize();
    mHandler->IntStartMonitoring();
    After(0ns);
  }

  // All that happened since and what was said about it: warnings with "!", errors with "!!" and
  // without the source's name.
  std::string After(std::chrono::nanoseconds time) {
    mHandler->Sync();
    mClock->Advance(time);
    mHandler->Sync();
    std::string lines;
    for (const auto& [level, text] : mLog.Lines()) {
      const std::string source = "(src/components/feedbackhsmactionhandler:";
      lines += (lines.empty() ? "" : ", ") + std::string(static_cast<size_t>(level) - 2, '!') +
               text.substr(text.starts_with(source) ? source.size() : 0);
    }
    mLog.Clear();
    return lines;
  }

  std::string AfterSetting(const char* key, const Json::Value& value,
                           std::chrono::nanoseconds time = {}) {
    mSettings->Set(key, value);
    return After(time);
  }

  LogCapture mLog{Log::ELogLevel::EInfo};
  const std::shared_ptr<ManualClock> mClock = std::make_shared<ManualClock>();
  const std::shared_ptr<CFakeHardware> mHardware = std::make_shared<CFakeHardware>();
  const std::shared_ptr<CFakeMeter> mMeter = std::make_shared<CFakeMeter>();
  std::shared_ptr<CFakeConfig> mSettings;
  std::unique_ptr<CFeedbackHsmActionHandler> mHandler;
};

TEST_F(AnActionHandler, InitializesThePartsFromTheSettings) {
  const struct {
    Values fitted, settings;
    std::string initialized, enabled;
  } cases[] = {
      {{{"HwHasBuzzer", true}},
       {{"HmiLedIntensityMode", "Fixed"}},
       "volume 4, sensor off, ",
       "connector1 enable, connector2 enable"},
      {{{"HwHasBuzzer", true}},
       {{"HmiBuzzerVolume", 9}, {"HmiLedIntensityMode", "Auto"}, {"InstallationComplete", false}},
       "volume 4, sensor on, ",
       ""},
      {{},
       {{"HmiBuzzerVolume", 2}, {"HmiLedIntensityMode", "auto"}},
       "sensor on, ",
       "connector1 enable, connector2 enable"}};
  const std::string disabled = "connector1 disable, connector2 disable";
  for (const auto& [fitted, settings, initialized, enabled] : cases) {
    Create(fitted, settings);
    mHandler->IntInitialize();
    EXPECT_EQ(After(0ns), disabled + ", " + initialized + "IntInitializingDone");
    mHandler->IntEnableConnectors();
    EXPECT_EQ(After(0ns), enabled);
    mHandler->IntDisableConnectors();
    EXPECT_EQ(After(0ns), disabled);
  }
}

TEST_F(AnActionHandler, FollowsTheLightStepByStepWithEachTick) {
  mHardware->mLight = 2;
  Monitor({{"HwHasLed", true}, {"HwHasMeterDisplay", true}},
          {{"HmiLedIntensityMode", "auto"}, {"HmiLedIntensityMin", 10}});
  EXPECT_EQ(After(200ms - 1ns), "") << "11 was the first tick's";
  EXPECT_EQ(After(1ns), "led 12, meter 12, meter 12");
  EXPECT_EQ(After(200ms), "") << "the light asks for no more";
  mHardware->mLight = 0;
  EXPECT_EQ(After(200ms), "led 11, meter 11, meter 11");
  mHandler->IntStopMonitoring();
  EXPECT_EQ(After(10s), "sensor off");
}

TEST_F(AnActionHandler, AppliesChangedSettingsWithTheNextTick) {
  Monitor({{"HwHasLed", true}}, {{"HmiLedIntensityMode", "Fixed"}, {"HmiLedIntensityManual", 0}});
  EXPECT_EQ(After(200ms), "") << "dark is where it begins";
  EXPECT_EQ(AfterSetting("HmiLedIntensityManual", 150), "sensor off");
  EXPECT_EQ(After(200ms), "led 100");
  EXPECT_EQ(AfterSetting("HmiLedIntensityMode", "Auto", 200ms), "sensor on, led 1");
  mHandler->IntStopMonitoring();
  EXPECT_EQ(AfterSetting("HmiLedIntensityMode", "fixed", 10s), "sensor off, sensor off");
  mHandler->IntStartMonitoring();
  EXPECT_EQ(After(0ns), "led 100");
}

TEST_F(AnActionHandler, GoesOnWhenAMeterFails) {
  Monitor({{"HwHasMeterDisplay", true}}, {{"HmiLedIntensityMode", "Fixed"}});
  mMeter->mReply = [] {
    ipc::MResult result;
    result.set_result(ipc::EResultIllegal);
    return result;
  };
  EXPECT_EQ(
      AfterSetting("HmiLedIntensityManual", 20, 200ms),
      "sensor off, meter 20, !287) Failed to set display brightness, result: Illegal, meter 20");
  mMeter->mReply = []() -> ipc::MResult { throw Rpc::CommunicationException("none"); };
  for (const std::string percent : {"30", "40"}) {
    EXPECT_EQ(AfterSetting("HmiLedIntensityManual", std::stoi(percent), 200ms),
              "sensor off, meter " + percent + ", !293) MeterClient communication failure: none");
    EXPECT_EQ(After(200ms), "") << "an unchanged brightness is not sent again";
  }
}

TEST_F(AnActionHandler, KeepsStillWithNeitherLampNorDisplay) {
  Create({});
  mHandler->IntStartMonitoring();
  EXPECT_EQ(AfterSetting("HmiLedIntensityManual", 50, 10s),
            "96) No led and no meter display available on the hardware. Brightness timer will not "
            "be started");
  mHandler->IntStopMonitoring();
  EXPECT_EQ(After(0ns), "sensor off");
}

TEST_F(AnActionHandler, TakesOnlyWholeNumbersForTheVolume) {
  Create({{"HwHasBuzzer", true}});
  EXPECT_EQ(AfterSetting("HmiBuzzerVolume", 3), "volume 3");
  EXPECT_EQ(AfterSetting("HmiBuzzerVolume", -1), "volume 0");
  EXPECT_EQ(AfterSetting("HmiBuzzerVolumeNight", 1), "");
  EXPECT_EQ(AfterSetting("HmiBuzzerVolume", "2"),
            "!!308) Unexpected type 4 for HmiBuzzerVolume, expected int");
  EXPECT_EQ(AfterSetting("HmiBuzzerVolume", 2.0),
            "!!308) Unexpected type 3 for HmiBuzzerVolume, expected int");
  EXPECT_EQ(AfterSetting("HmiBuzzerVolume", Json::Value()),
            "!!308) Unexpected type 0 for HmiBuzzerVolume, expected int");
  Create({});
  EXPECT_EQ(AfterSetting("HmiBuzzerVolume", 3), "");
}

TEST_F(AnActionHandler, PassesErrorsToTheConnectorsThatTheyConcern) {
  Create({});
  ipc::MDiagnosticsSignal signal;
  signal.set_identifier(ipc::ESignalIdentifierChargeControlCpLowError);
  ipc::MDiagnosticsData& value = *signal.add_data();
  const auto afterError = [&](int instance) {
    signal.mutable_instance()->set_instance(static_cast<ipc::EInstanceType>(instance));
    mHandler->IntUpdateErrorState(std::make_shared<IntOnErrorChanged>(signal));
    return After(0ns);
  };
  const std::string text = "117) Diagnostics notified error change: CpLowErr(1004)[EInstanceType";
  value.set_bool_value(true);
  EXPECT_EQ(afterError(0), text + "All] -> true, connector1 +1004, connector2 +1004");
  value.set_bool_value(false);
  EXPECT_EQ(afterError(1), text + "Connector1] -> false, connector1 -1004");
  value.set_int32_value(1);
  EXPECT_EQ(afterError(2), text + "Connector2] -> false, connector2 -1004");
  EXPECT_THROW(afterError(3), std::out_of_range);
  EXPECT_THROW(afterError(-1), std::out_of_range);
}

TEST_F(AnActionHandler, ShowsAndSoundsFeedbackEvents) {
  const auto afterEvent = [this](int type, int instance) {
    ipc::MFbEventType event;
    event.set_event(static_cast<ipc::EFbEventType>(type));
    ipc::MInstanceType connector;
    connector.set_instance(static_cast<ipc::EInstanceType>(instance));
    mHandler->IntTriggerFeedbackEvent(
        std::make_shared<ExtOnTriggerFeedbackEvent>(event, connector));
    const std::string lines = After(0ns);
    EXPECT_TRUE(lines.starts_with("152) Feedback event triggered: ")) << lines;
    return lines.substr(31);
  };
  Create({{"HwHasBuzzer", true}});
  EXPECT_EQ(afterEvent(0, 2), "AuthSuccess[EInstanceTypeConnector2], connector2 0 for 1000");
  EXPECT_EQ(afterEvent(1, 0),
            "AuthFailure[EInstanceTypeAll], connector1 1 for 1000, connector2 1 for 1000");
  EXPECT_EQ(afterEvent(2, 1), "TagSwipe[EInstanceTypeConnector1], beep");
  EXPECT_EQ(afterEvent(3, 1), "Identify[EInstanceTypeConnector1], connector1 2 for 5000");
  EXPECT_EQ(afterEvent(7, 0),
            "Unknown[EInstanceTypeAll], !195) Unknown feedback event type received: 7");
  Create({});
  EXPECT_EQ(afterEvent(2, 0), "TagSwipe[EInstanceTypeAll]");
}

TEST_F(AnActionHandler, EndsUpWithTheLastSettingHoweverFastTheyChange) {
  for (int round = 0; round < 20; ++round) {
    Create({{"HwHasLed", true}, {"HwHasBuzzer", true}}, {{"HmiLedIntensityMode", "Fixed"}});
    std::thread store([this] {
      for (int value = 1; value <= 51; ++value) {
        mSettings->Set("HmiLedIntensityManual", value);
        mSettings->Set("HmiBuzzerVolume", value % 4);
      }
    });
    mHandler->IntInitialize();
    store.join();
    const std::string lines = After(0ns);
    EXPECT_EQ(lines.substr(lines.rfind("volume"), 8), "volume 3");
    mHandler->IntStartMonitoring();
    EXPECT_EQ(After(0ns), "led 51");
  }
}

}  // namespace
