// What the status LED shows for one connector.
#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/rpc/interfaces/sessionmanager.h"
#include "platform/worker/worker.h"
#include "src/components/iconnector.h"
#include "src/components/iledcontrol.h"
#include "src/components/prefix.h"
#include "utils/connectortables.h"

// Precedence: event, oldest error, disabled, state of the connector.
//
// Threads: mMutex makes one step of each operation and of the end of an event. mDecisionMutex,
// taken second, makes one step of deciding what the lamp shows and showing it, so that an older
// decision never overwrites a newer one. The session manager's callback takes only the latter.
// Both are held while the lamp is written and its change reported, so a diagnostics service that
// hangs can hold up the callers for its time limit; never while waiting for the state machine.
class CConnector : public IConnector {
 public:
  // Listens to the session manager and shows the disabled lamp. The worker ends the events.
  CConnector(std::shared_ptr<CPrefix> prefix, std::shared_ptr<ILedControl> ledControl,
             std::shared_ptr<ISessionManager> sessionManager, std::shared_ptr<CWorker> worker);

  // Returns when neither the session manager nor the worker is inside this object, and neither will
  // be again. Not to be called from the session manager's callback.
  ~CConnector() override;
  CConnector(const CConnector&) = delete;
  CConnector& operator=(const CConnector&) = delete;

  void Enable() override;
  void Disable() override;
  void ShowEvent(EConnectorEvent event, std::chrono::milliseconds displayTime) override;
  void AddError(int32_t identifier) override;
  void RemoveError(int32_t identifier) override;

 private:
  void HandleSessionStateChanged(const ipc::MConnectorState& state);
  void ResetActiveEvent(uint64_t eventNumber);

  // These are called with mDecisionMutex held.
  void UpdateLed();
  void ShowDisabledLed();
  void Show(const CLedState& led);

  // Empty: leave the lamp as it is.
  std::optional<CLedState> MapHmiStateToLedState(EHmiState state) const;
  std::optional<CLedState> MapEventToLedState(EConnectorEvent event) const;
  CLedState MapErrorToLedState(int32_t identifier) const;
  EHmiState MapConnectorStateToHmiState(int32_t state) const;

  const std::string& Prefix() const { return mPrefix->Text(); }

  const std::shared_ptr<CPrefix> mPrefix;
  const std::shared_ptr<ILedControl> mLedControl;
  const std::shared_ptr<ISessionManager> mSessionManager;
  const std::shared_ptr<CWorker> mWorker;

  std::mutex mMutex;
  // Guarded by mMutex:
  WorkerCallHandle mReset;
  uint64_t mEventNumber = 0;  // the newest event's, counted from 1

  std::mutex mDecisionMutex;
  // Guarded by mDecisionMutex:
  bool mEnabled = false;
  EHmiState mHmiState = EHmiState::EUnknown;
  bool mEventActive = false;
  std::vector<int32_t> mErrors;  // oldest first
};
