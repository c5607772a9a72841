#include "utils/reduceddiagnosticssignal.h"

#include <cmath>
#include <utility>

template <typename T>
CReducedDiagnosticsSignalBase<T>::CReducedDiagnosticsSignalBase(
    const CSignalDefinition<T>* definition, ipc::EInstanceType instance, std::optional<T> threshold,
    std::optional<std::chrono::milliseconds> resendInterval, std::shared_ptr<ISteadyClock> clock)
    : mLastSentValue(definition->DefaultValue()),
      mSignal(std::make_unique<CDiagnosticsSignal<T>>(definition, instance)),
      mResendInterval(resendInterval),
      mThreshold(threshold),
      mClock(std::move(clock)) {}

template <typename T>
void CReducedDiagnosticsSignalBase<T>::Send(std::uint32_t value) {
  const T current = static_cast<T>(value);
  const auto now = mClock->Now();
  const bool due = mResendInterval && mLastSendTime + *mResendInterval < now;
  const bool significant = mThreshold && !IsBelowThreshold(mLastSentValue, current);
  if (!due && !significant && (mResendInterval || mThreshold)) {
    return;
  }
  mLastSendTime = now;
  mLastSentValue = current;
  mSignal->Send(current);
}

template <typename T>
CReducedDiagnosticsSignal<T>::CReducedDiagnosticsSignal(
    const CSignalDefinition<T>* definition, ipc::EInstanceType instance, std::optional<T> threshold,
    std::optional<std::chrono::milliseconds> resendInterval, std::shared_ptr<ISteadyClock> clock)
    : CReducedDiagnosticsSignalBase<T>(definition, instance, threshold, resendInterval,
                                       std::move(clock)) {}

template <typename T>
bool CReducedDiagnosticsSignal<T>::IsBelowThreshold(T last, T current) const {
  return this->Threshold().value() > std::abs(last - current);
}

template class CReducedDiagnosticsSignalBase<float>;
template class CReducedDiagnosticsSignal<float>;
