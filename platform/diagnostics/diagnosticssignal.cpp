#include "platform/diagnostics/diagnosticssignal.h"

#include <fmt/core.h>

#include <string>
#include <type_traits>
#include <vector>

#include "platform/diagnostics/diagnosticscommclient.h"
#include "platform/ipc/diagnostics.pb.h"
#include "platform/rpc/communicationexception.h"
#include "platform/rpc/interfaces/diagnostics.h"

namespace {

using namespace std::chrono;

void Store(ipc::MDiagnosticsData& data, bool value) {
  data.set_bool_value(value);
}
void Store(ipc::MDiagnosticsData& data, int32_t value) {
  data.set_int32_value(value);
}
void Store(ipc::MDiagnosticsData& data, uint32_t value) {
  data.set_uint32_value(value);
}
void Store(ipc::MDiagnosticsData& data, int64_t value) {
  data.set_int64_value(value);
}
void Store(ipc::MDiagnosticsData& data, float value) {
  data.set_float_value(value);
}
void Store(ipc::MDiagnosticsData& data, const std::string& value) {
  data.set_string_value(value);
}

bool Load(const ipc::MDiagnosticsData& data, bool& value) {
  value = data.bool_value();
  return data.has_bool_value();
}
bool Load(const ipc::MDiagnosticsData& data, int32_t& value) {
  value = data.int32_value();
  return data.has_int32_value();
}
bool Load(const ipc::MDiagnosticsData& data, uint32_t& value) {
  value = data.uint32_value();
  return data.has_uint32_value();
}
bool Load(const ipc::MDiagnosticsData& data, int64_t& value) {
  value = data.int64_value();
  return data.has_int64_value();
}
bool Load(const ipc::MDiagnosticsData& data, float& value) {
  value = data.float_value();
  return data.has_float_value();
}
bool Load(const ipc::MDiagnosticsData& data, std::string& value) {
  value = data.string_value();
  return data.has_string_value();
}

template <typename T>
void Store(ipc::MDiagnosticsSignal& signal, const T& value) {
  Store(*signal.add_data(), value);
}

template <typename T>
void Store(ipc::MDiagnosticsSignal& signal, const std::vector<T>& values) {
  for (const T& value : values) {
    Store(*signal.add_data(), value);
  }
}

template <typename T>
bool Load(const ipc::MDiagnosticsSignal& signal, T& value) {
  return signal.data_size() == 1 && Load(signal.data(0), value);
}

template <typename T>
bool Load(const ipc::MDiagnosticsSignal& signal, std::vector<T>& values) {
  for (const auto& data : signal.data()) {
    if (!Load(data, values.emplace_back())) {
      return false;
    }
  }
  return true;
}

}  // namespace

template <typename T>
CDiagnosticsSignal<T>::CDiagnosticsSignal(const CSignalDefinition<T>* definition,
                                          ipc::EInstanceType instance)
    : mDefinition(definition), mInstance(instance), mValue(definition->DefaultValue()) {}

template <typename T>
std::unique_lock<std::mutex> CDiagnosticsSignal<T>::Lock() const {
  return std::unique_lock(mMutex);
}

template <typename T>
void CDiagnosticsSignal<T>::SetValue(const T& value) {
  mValue = value;
}

template <typename T>
void CDiagnosticsSignal<T>::SetTimestamp(TimePoint timestamp) {
  mTimestamp = timestamp;
}

template <typename T>
void CDiagnosticsSignal<T>::Send() {
  ipc::MDiagnosticsSignal signal;
  signal.set_identifier(mDefinition->identifier);
  signal.mutable_instance()->set_instance(mInstance);
  {
    const auto lock = Lock();
    Store(signal, mValue);
    const auto sinceEpoch = duration_cast<microseconds>(mTimestamp.time_since_epoch()).count();
    signal.mutable_timestamp()->set_seconds(sinceEpoch / 1'000'000);
    signal.mutable_timestamp()->set_microseconds(static_cast<uint32_t>(sinceEpoch % 1'000'000));
  }
  const ipc::MResult result = CDiagnosticsCommClient::Get()->SendSignal(signal);
  if (result.result() != ipc::EResultOk) {
    throw Rpc::CommunicationException(fmt::format("signal {} ({}) was refused: {}",
                                                  static_cast<int>(mDefinition->identifier),
                                                  mDefinition->name, result.text()));
  }
}

template <typename T>
void CDiagnosticsSignal<T>::Send(const T& value) {
  {
    const auto lock = Lock();
    SetValue(value);
    SetTimestamp(system_clock::now());
  }
  Send();
}

template <typename T>
T CDiagnosticsSignal<T>::Receive() const {
  ipc::MDiagnosticsRequest request;
  request.set_identifier(mDefinition->identifier);
  request.mutable_instance()->set_instance(mInstance);
  T value{};
  if (!Load(CDiagnosticsCommClient::Get()->ReceiveSignal(request), value)) {
    throw Rpc::CommunicationException(fmt::format("signal {} ({}) has a value of another type",
                                                  static_cast<int>(mDefinition->identifier),
                                                  mDefinition->name));
  }
  return value;
}

template class CDiagnosticsSignal<bool>;
template class CDiagnosticsSignal<int32_t>;
template class CDiagnosticsSignal<uint32_t>;
template class CDiagnosticsSignal<int64_t>;
template class CDiagnosticsSignal<float>;
template class CDiagnosticsSignal<std::string>;
template class CDiagnosticsSignal<std::vector<int32_t>>;
template class CDiagnosticsSignal<std::vector<uint32_t>>;
template class CDiagnosticsSignal<std::vector<float>>;
template class CDiagnosticsSignal<std::vector<std::string>>;
