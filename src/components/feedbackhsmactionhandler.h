// What the lifecycle machine decides, carried out on the charger's feedback hardware.
#pragma once

#include <json/json.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/kvconfig/kvconfig.h"
#include "platform/rpc/interfaces/meter.h"
#include "platform/worker/worker.h"
#include "src/components/ibrightnesscontrol.h"
#include "src/components/iconnector.h"
#include "src/components/ifeedbackconfig.h"
#include "src/components/iledcontrol.h"
#include "src/hal/ibuzzer.h"
#include "src/hal/ilightsensor.h"
#include "statemachines/feedbackhsmactionhandlerbase.h"
#include "statemachines/hsmalive.h"

// Threads: the actions run on the machine's thread. Brightness and settings belong to the handler's
// own worker: the tick runs there, and settings are applied there one after the other, so that an
// older value never overwrites a newer one. Leaving Enabled does not wait for a tick under way.
class CFeedbackHsmActionHandler : public CHsmAlive<CFeedbackHsmActionHandlerBase> {
 public:
  // Follows the settings from here on, and reads once what the unit is fitted with. Connector k of
  // an event's instance is the k-th of the list.
  CFeedbackHsmActionHandler(std::vector<std::shared_ptr<ILedControl>> ledControls,
                            std::vector<std::shared_ptr<IConnector>> connectors,
                            std::shared_ptr<IBrightnessControl> brightnessControl,
                            std::shared_ptr<ILightSensor> lightSensor,
                            std::shared_ptr<IBuzzer> buzzer,
                            std::shared_ptr<KvConfig::IConfig> settings,
                            const std::shared_ptr<KvConfig::IReadOnlyConfig>& hardware,
                            std::shared_ptr<IFeedbackConfig> feedbackConfig,
                            std::vector<std::shared_ptr<IMeter>> meters,
                            std::shared_ptr<ISteadyClock> clock = SystemSteadyClock());

  // Waits for a tick that is under way, and with it for its meter.
  ~CFeedbackHsmActionHandler() override;
  CFeedbackHsmActionHandler(const CFeedbackHsmActionHandler&) = delete;
  CFeedbackHsmActionHandler& operator=(const CFeedbackHsmActionHandler&) = delete;

  void IntDisableConnectors() override;
  void IntEnableConnectors() override;
  void IntInitialize() override;
  void IntStartMonitoring() override;
  void IntStopMonitoring() override;

  // Both throw std::out_of_range for an instance beyond the connectors.
  void IntTriggerFeedbackEvent(const std::shared_ptr<ExtOnTriggerFeedbackEvent>& event) override;
  void IntUpdateErrorState(const std::shared_ptr<IntOnErrorChanged>& event) override;

 private:
  std::vector<std::shared_ptr<IConnector>> SelectConnectors(
      const ipc::MInstanceType& instance) const;
  void OnHmiLedIntensityChange();

  // These run on the worker.
  void OnBuzzerVolumeChange(const Json::Value& value);
  void WriteBuzzerVolume(int volume);
  void UpdateBrightnessSettings();
  void BrightnessControlTimerHandler();
  void SetMeterDisplayBrightness(uint8_t brightness);

  // Constant after construction.
  const std::vector<std::shared_ptr<ILedControl>> mLedControls;
  const std::vector<std::shared_ptr<IConnector>> mConnectors;
  const std::shared_ptr<IBrightnessControl> mBrightnessControl;
  const std::shared_ptr<ILightSensor> mLightSensor;
  const std::shared_ptr<IBuzzer> mBuzzer;
  const std::shared_ptr<KvConfig::IConfig> mSettings;
  const std::shared_ptr<IFeedbackConfig> mFeedbackConfig;
  const std::vector<std::shared_ptr<IMeter>> mMeters;
  const bool mHasMeterDisplay;
  const bool mHasLed;
  const bool mHasBuzzer;

  // The machine's thread only.
  bool mInstallationComplete = false;
  WorkerCallHandle mBrightnessTimer;

  // The worker only; percent.
  bool mAutoBrightness = false;
  uint8_t mCurrentBrightness = 0;
  uint8_t mPreviousBrightness = 0;

  std::vector<KvConfig::Subscription> mSubscriptions;
};
