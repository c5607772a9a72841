#include "src/components/connector.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "platform/log/log.h"
#include "utils/traceentry.h"

CConnector::CConnector(std::shared_ptr<CPrefix> prefix, std::shared_ptr<ILedControl> ledControl,
                       std::shared_ptr<ISessionManager> sessionManager,
                       std::shared_ptr<CWorker> worker)
    : mPrefix(std::move(prefix)),
      mLedControl(std::move(ledControl)),
      mSessionManager(std::move(sessionManager)),
      mWorker(std::move(worker)) {
  mSessionManager->SetConnectorStateCallback(
      [this](const ipc::MConnectorState& state) { HandleSessionStateChanged(state); });
  const std::lock_guard decision(mDecisionMutex);
  ShowDisabledLed();
}

CConnector::~CConnector() {
  // Without a lock: both calls wait for a call that is under way, which needs the locks itself.
  mSessionManager->SetConnectorStateCallback({});
  if (mReset) {
    mReset->Cancel();
    mWorker->Sync();
  }
}

void CConnector::Enable() {
  TraceEntry<CConnector>("Enable", Prefix());
  const std::scoped_lock lock(mMutex, mDecisionMutex);
  mEnabled = true;
  mLedControl->ResetMinimumBrightness();
  UpdateLed();
}

void CConnector::Disable() {
  TraceEntry<CConnector>("Disable", Prefix());
  const std::scoped_lock lock(mMutex, mDecisionMutex);
  mEnabled = false;
  ShowDisabledLed();
}

void CConnector::ShowEvent(EConnectorEvent event, std::chrono::milliseconds displayTime) {
  TraceEntry<CConnector>("ShowEvent", Prefix());
  const std::scoped_lock lock(mMutex, mDecisionMutex);
  if (mReset && !mReset->HasRun()) {
    mReset->Cancel();
  }
  mEventActive = true;
  LOG(Debug, "(src/components/connector:66) {}Change LED for Event: {}", Prefix(),
      static_cast<int>(event));
  if (const auto led = MapEventToLedState(event)) {
    if (event == EConnectorEvent::EIdentify) {
      mLedControl->SetMinimumBrightness(kFullFloor);
    } else {
      mLedControl->ResetMinimumBrightness();
    }
    Show(*led);
  }
  ++mEventNumber;
  mReset = mWorker->AddCall([this, number = mEventNumber] { ResetActiveEvent(number); },
                            mWorker->Now() + displayTime, std::chrono::nanoseconds(0));
}

void CConnector::AddError(int32_t identifier) {
  TraceEntry<CConnector>("AddError", Prefix());
  const std::scoped_lock lock(mMutex, mDecisionMutex);
  if (std::ranges::find(mErrors, identifier) == mErrors.end()) {
    mErrors.push_back(identifier);
  }
  mLedControl->SetMinimumBrightness(kErrorFloor);
  UpdateLed();
}

void CConnector::RemoveError(int32_t identifier) {
  TraceEntry<CConnector>("RemoveError", Prefix());
  const std::scoped_lock lock(mMutex, mDecisionMutex);
  if (std::erase(mErrors, identifier) == 0) {
    return;
  }
  if (mErrors.empty()) {
    mLedControl->ResetMinimumBrightness();
  }
  UpdateLed();
}

void CConnector::HandleSessionStateChanged(const ipc::MConnectorState& state) {
  TraceEntry<CConnector>("HandleSessionStateChanged", Prefix());
  const std::lock_guard decision(mDecisionMutex);
  const int32_t number = state.state();
  LOG(Debug, "(src/components/connector:121) {}SessionManager notified state: {}", Prefix(),
      number);
  mHmiState = MapConnectorStateToHmiState(number);
  UpdateLed();
}

void CConnector::ResetActiveEvent(uint64_t eventNumber) {
  const std::scoped_lock lock(mMutex, mDecisionMutex);
  if (eventNumber != mEventNumber) {
    // The next event came while this call was on its way: it could not be cancelled any more.
    return;
  }
  mEventActive = false;
  LOG(Debug, "(src/components/connector:131) {}Active event reset, updating led...", Prefix());
  mLedControl->ResetMinimumBrightness();
  UpdateLed();
}

void CConnector::UpdateLed() {
  if (mEventActive) {
    LOG(Debug,
        "(src/components/connector:142) {}Connector is already showing event, skip update "
        "connector LED",
        Prefix());
  } else if (!mErrors.empty()) {
    const int32_t oldest = mErrors.front();
    LOG(Debug, "(src/components/connector:147) {}Change LED for Signal: {}", Prefix(), oldest);
    Show(MapErrorToLedState(oldest));
  } else if (!mEnabled) {
    LOG(Debug, "(src/components/connector:152) {}Connector is not yet enabled, show disabled LED",
        Prefix());
    ShowDisabledLed();
  } else {
    LOG(Debug, "(src/components/connector:158) {}Change LED for State: {}", Prefix(),
        static_cast<int>(mHmiState));
    if (const auto led = MapHmiStateToLedState(mHmiState)) {
      Show(*led);
    }
  }
}

void CConnector::ShowDisabledLed() {
  mLedControl->SetMinimumBrightness(kFullFloor);
  Show(kDisabledLed);
}

void CConnector::Show(const CLedState& led) {
  mLedControl->SetMainLed(led.color, led.mode);
}

EHmiState CConnector::MapConnectorStateToHmiState(int32_t state) const {
  const auto known = HmiStateOf(state);
  if (!known) {
    LOG(Warning, "(src/components/connector:206) {}Unexpected connector state received: {}",
        Prefix(), state);
  }
  return known.value_or(EHmiState::EAvailable);
}

std::optional<CLedState> CConnector::MapHmiStateToLedState(EHmiState state) const {
  const auto index = static_cast<size_t>(state);
  if (index >= kStateLeds.size()) {
    LOG(Warning, "(src/components/connector:233) {}Unexpected HMI state received: {}", Prefix(),
        static_cast<int>(state));
    return std::nullopt;
  }
  return kStateLeds[index];
}

std::optional<CLedState> CConnector::MapEventToLedState(EConnectorEvent event) const {
  TraceEntry<CConnector>("MapEventToLedState", Prefix());
  const auto index = static_cast<size_t>(event);
  if (index >= kEventLeds.size()) {
    LOG(Warning, "(src/components/connector:321) {}Unexpected active event: {}", Prefix(),
        static_cast<int>(event));
    return std::nullopt;
  }
  return kEventLeds[index];
}

CLedState CConnector::MapErrorToLedState(int32_t identifier) const {
  TraceEntry<CConnector>("MapErrorToLedState", Prefix());
  return LedOfError(identifier);
}
