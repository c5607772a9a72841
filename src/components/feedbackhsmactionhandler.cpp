#include "src/components/feedbackhsmactionhandler.h"

#include <chrono>
#include <utility>

#include "platform/log/log.h"
#include "platform/rpc/communicationexception.h"
#include "utils/connectortables.h"
#include "utils/controltext.h"
#include "utils/signaltext.h"
#include "utils/traceentry.h"

namespace {

using namespace std::chrono_literals;

constexpr const char* kSubscriber = "feedbackhsm";
constexpr auto kBrightnessPeriod = 200ms;

void Trace(const char* operation) {
  TraceEntry<CFeedbackHsmActionHandler>(operation);
}

}  // namespace

CFeedbackHsmActionHandler::CFeedbackHsmActionHandler(
    std::vector<std::shared_ptr<ILedControl>> ledControls,
    std::vector<std::shared_ptr<IConnector>> connectors,
    std::shared_ptr<IBrightnessControl> brightnessControl,
    std::shared_ptr<ILightSensor> lightSensor, std::shared_ptr<IBuzzer> buzzer,
    std::shared_ptr<KvConfig::IConfig> settings,
    const std::shared_ptr<KvConfig::IReadOnlyConfig>& hardware,
    std::shared_ptr<IFeedbackConfig> feedbackConfig, std::vector<std::shared_ptr<IMeter>> meters,
    std::shared_ptr<ISteadyClock> clock)
    : CWorker("handler", std::move(clock)),
      mLedControls(std::move(ledControls)),
      mConnectors(std::move(connectors)),
      mBrightnessControl(std::move(brightnessControl)),
      mLightSensor(std::move(lightSensor)),
      mBuzzer(std::move(buzzer)),
      mSettings(std::move(settings)),
      mFeedbackConfig(std::move(feedbackConfig)),
      mMeters(std::move(meters)),
      mHasMeterDisplay(hardware->GetBool(Settings::kHasMeterDisplay, false)),
      mHasLed(hardware->GetBool(Settings::kHasLed, false)),
      mHasBuzzer(hardware->GetBool(Settings::kHasBuzzer, false)) {
  CWorker::Start();
  mSubscriptions.push_back(
      mSettings->Subscribe(kSubscriber, Settings::kLedIntensityPrefix,
                           [this](const Json::Value&) { OnHmiLedIntensityChange(); }));
  mSubscriptions.push_back(mSettings->Subscribe(
      kSubscriber, Settings::kBuzzerVolume,
      [this](const Json::Value& value) {
        NonBlockingCall([this, value] { OnBuzzerVolumeChange(value); });
      },
      KvConfig::EMatch::EWhole));
}

CFeedbackHsmActionHandler::~CFeedbackHsmActionHandler() {
  mSubscriptions.clear();
  CWorker::Stop();
}

void CFeedbackHsmActionHandler::IntDisableConnectors() {
  Trace("IntDisableConnectors");
  for (const auto& connector : mConnectors) {
    connector->Disable();
  }
}

void CFeedbackHsmActionHandler::IntEnableConnectors() {
  Trace("IntEnableConnectors");
  if (!mInstallationComplete) {
    return;
  }
  for (const auto& connector : mConnectors) {
    connector->Enable();
  }
}

void CFeedbackHsmActionHandler::IntInitialize() {
  Trace("IntInitialize");
  mInstallationComplete = mSettings->GetBool(Settings::kInstallationComplete, true);
  for (const auto& connector : mConnectors) {
    connector->Disable();
  }
  BlockingCall([this] {
    if (mHasBuzzer) {
      WriteBuzzerVolume(
          mSettings->GetInt(Settings::kBuzzerVolume, DefaultNumber(Settings::kBuzzerVolume)));
    }
    UpdateBrightnessSettings();
  });
  Post<IntInitializingDone>();
}

void CFeedbackHsmActionHandler::IntStartMonitoring() {
  Trace("IntStartMonitoring");
  if (!mHasLed && !mHasMeterDisplay) {
    LOG(Info,
        "(src/components/feedbackhsmactionhandler:96) No led and no meter display available on the "
        "hardware. Brightness timer will not be started");
    return;
  }
  mBrightnessTimer = AddCall([this] { BrightnessControlTimerHandler(); }, Now(), kBrightnessPeriod);
}

void CFeedbackHsmActionHandler::IntStopMonitoring() {
  Trace("IntStopMonitoring");
  if (mBrightnessTimer) {
    mBrightnessTimer->Cancel();
    mBrightnessTimer.reset();
  }
  mLightSensor->Disable();
}

void CFeedbackHsmActionHandler::IntUpdateErrorState(
    const std::shared_ptr<IntOnErrorChanged>& event) {
  Trace("IntUpdateErrorState");
  const auto& [signal] = event->GetPayload();
  const bool active = signal.data().at(0).bool_value();
  LOG(Info,
      "(src/components/feedbackhsmactionhandler:117) Diagnostics notified error change: "
      "{}({})[{}] -> {}",
      StatusNotificationIdentifierToInfo(signal.identifier()),
      static_cast<int>(signal.identifier()), ipc::EInstanceType_Name(signal.instance().instance()),
      active);
  for (const auto& connector : SelectConnectors(signal.instance())) {
    if (active) {
      connector->AddError(signal.identifier());
    } else {
      connector->RemoveError(signal.identifier());
    }
  }
}

void CFeedbackHsmActionHandler::IntTriggerFeedbackEvent(
    const std::shared_ptr<ExtOnTriggerFeedbackEvent>& event) {
  Trace("IntTriggerFeedbackEvent");
  const auto& [type, instance] = event->GetPayload();
  LOG(Info, "(src/components/feedbackhsmactionhandler:152) Feedback event triggered: {}[{}]",
      FbEventTypeToString(type), ipc::EInstanceType_Name(instance.instance()));
  const auto connectors = SelectConnectors(instance);
  const auto show = [&connectors](EConnectorEvent shown, std::chrono::milliseconds displayTime) {
    for (const auto& connector : connectors) {
      connector->ShowEvent(shown, displayTime);
    }
  };
  switch (type.event()) {
    case ipc::EFbEventTypeAuthSuccess:
      show(EConnectorEvent::EAuthSuccess, kAuthDisplayTime);
      break;
    case ipc::EFbEventTypeAuthFailure:
      show(EConnectorEvent::EAuthFailure, kAuthDisplayTime);
      break;
    case ipc::EFbEventTypeTagSwipe:
      if (mHasBuzzer) {
        mBuzzer->Beep();
      }
      break;
    case ipc::EFbEventTypeIdentify:
      show(EConnectorEvent::EIdentify, kIdentifyDisplayTime);
      break;
    default:
      LOG(Warning,
          "(src/components/feedbackhsmactionhandler:195) Unknown feedback event type received: {}",
          static_cast<int>(type.event()));
  }
}

std::vector<std::shared_ptr<IConnector>> CFeedbackHsmActionHandler::SelectConnectors(
    const ipc::MInstanceType& instance) const {
  if (instance.instance() == ipc::EInstanceTypeAll) {
    return mConnectors;
  }
  return {mConnectors.at(static_cast<size_t>(instance.instance()) - 1)};
}

void CFeedbackHsmActionHandler::OnHmiLedIntensityChange() {
  Trace("OnHmiLedIntensityChange");
  if (mHasLed || mHasMeterDisplay) {
    NonBlockingCall([this] { UpdateBrightnessSettings(); });
  }
}

void CFeedbackHsmActionHandler::OnBuzzerVolumeChange(const Json::Value& value) {
  Trace("OnBuzzerVolumeChange");
  if (value.type() == Json::realValue || !value.isInt()) {
    LOG(Error,
        "(src/components/feedbackhsmactionhandler:308) Unexpected type {} for {}, expected int",
        static_cast<int>(value.type()), Settings::kBuzzerVolume);
    return;
  }
  if (mHasBuzzer) {
    WriteBuzzerVolume(value.asInt());
  }
}

void CFeedbackHsmActionHandler::WriteBuzzerVolume(int volume) {
  mBuzzer->WriteVolume(static_cast<uint8_t>(mFeedbackConfig->LimitBuzzerVolume(volume)));
}

void CFeedbackHsmActionHandler::UpdateBrightnessSettings() {
  Trace("UpdateBrightnessSettings");
  const auto intensity = [this](const char* key) {
    return static_cast<uint8_t>(
        mFeedbackConfig->LimitLedIntensity(mSettings->GetInt(key, DefaultNumber(key))));
  };
  switch (
      mFeedbackConfig->ParseBrightnessMode(mSettings->GetString(Settings::kLedIntensityMode, ""))) {
    case EBrightnessMode::Auto: {
      mAutoBrightness = true;
      const uint8_t minimum = intensity(Settings::kLedIntensityMin);
      const uint8_t maximum = intensity(Settings::kLedIntensityMax);
      mBrightnessControl->SetRange(maximum, minimum);
      mLightSensor->Enable();
      break;
    }
    case EBrightnessMode::Fixed:
      mAutoBrightness = false;
      mCurrentBrightness = intensity(Settings::kLedIntensityManual);
      mLightSensor->Disable();
      break;
  }
  LOG(Debug, "(src/components/feedbackhsmactionhandler:275) Brightness is now: {} | {}",
      mAutoBrightness, mCurrentBrightness);
}

void CFeedbackHsmActionHandler::BrightnessControlTimerHandler() {
  if (mAutoBrightness) {
    LOG(Debug,
        "(src/components/feedbackhsmactionhandler:229) BrightnessControlTimerHandler -> "
        "mAutoBrightness");
    const uint8_t illuminance = mLightSensor->GetIlluminancePercentage();
    mCurrentBrightness = mBrightnessControl->CalculateBrightness(illuminance);
    LOG(Debug, "(src/components/feedbackhsmactionhandler:232) Illum value: {}", illuminance);
  }
  if (mCurrentBrightness == mPreviousBrightness) {
    return;
  }
  LOG(Debug, "(src/components/feedbackhsmactionhandler:237) Brightness value: {}",
      mCurrentBrightness);
  if (mHasLed) {
    for (const auto& ledControl : mLedControls) {
      ledControl->SetBrightness(mCurrentBrightness);
    }
  }
  if (mHasMeterDisplay) {
    SetMeterDisplayBrightness(mCurrentBrightness);
  }
  mPreviousBrightness = mCurrentBrightness;
}

void CFeedbackHsmActionHandler::SetMeterDisplayBrightness(uint8_t brightness) {
  ipc::MDisplayBrightness message;
  message.set_percentage(brightness);
  try {
    for (const auto& meter : mMeters) {
      const ipc::MResult result = meter->SetDisplayBrightness(message);
      if (result.result() != ipc::EResultOk) {
        LOG(Warning,
            "(src/components/feedbackhsmactionhandler:287) Failed to set display brightness, "
            "result: {}",
            ResultToString(result));
      }
    }
  } catch (const Rpc::CommunicationException& exception) {
    LOG(Warning,
        "(src/components/feedbackhsmactionhandler:293) MeterClient communication failure: {}",
        exception.what());
  }
}
