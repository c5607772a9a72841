// A measured value that is sent to diagnostics only when it has changed significantly.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>

#include "platform/diagnostics/diagnosticssignal.h"
#include "platform/worker/steadyclock.h"

// Threads: one; there is no lock.
template <typename T>
class CReducedDiagnosticsSignalBase {
 public:
  // True when the change from the last sent value is too small to be sent.
  virtual bool IsBelowThreshold(T last, T current) const = 0;

  // Sends the value when the resend interval is over or the change is significant; with neither an
  // interval nor a threshold, always. Passes Rpc::CommunicationException on; the value then counts
  // as sent all the same.
  void Send(std::uint32_t value);

 protected:
  CReducedDiagnosticsSignalBase(const CSignalDefinition<T>* definition, ipc::EInstanceType instance,
                                std::optional<T> threshold,
                                std::optional<std::chrono::milliseconds> resendInterval,
                                std::shared_ptr<ISteadyClock> clock);
  ~CReducedDiagnosticsSignalBase() = default;

  std::optional<T> Threshold() const { return mThreshold; }

 private:
  ISteadyClock::TimePoint mLastSendTime;
  T mLastSentValue;
  std::unique_ptr<CDiagnosticsSignal<T>> mSignal;
  const std::optional<std::chrono::milliseconds> mResendInterval;
  const std::optional<T> mThreshold;
  const std::shared_ptr<ISteadyClock> mClock;
};

template <typename T>
class CReducedDiagnosticsSignal final : public CReducedDiagnosticsSignalBase<T> {
 public:
  // The definition must outlive the signal; its default counts as the value sent last.
  CReducedDiagnosticsSignal(const CSignalDefinition<T>* definition, ipc::EInstanceType instance,
                            std::optional<T> threshold,
                            std::optional<std::chrono::milliseconds> resendInterval = std::nullopt,
                            std::shared_ptr<ISteadyClock> clock = SystemSteadyClock());

  // threshold > |last - current|. Throws std::bad_optional_access without a threshold.
  bool IsBelowThreshold(T last, T current) const override;
};

extern template class CReducedDiagnosticsSignalBase<float>;
extern template class CReducedDiagnosticsSignal<float>;
