#include "utils/chargertext.h"

#include <fmt/core.h>

#include "utils/texttable.h"

namespace {

// clang-format off

constexpr auto kCpStates = std::to_array<CTextRow<ipc::ECpState>>({
    {ipc::ECpStateA,       "State A"},
    {ipc::ECpStateB,       "State B"},
    {ipc::ECpStateC,       "State C"},
    {ipc::ECpStateD,       "State D"},
    {ipc::ECpStateE,       "State E"},
    {ipc::ECpStateF,       "State F"},
    {ipc::ECpStateInvalid, "State Invalid"},
});

constexpr auto kPpStates = std::to_array<CTextRow<ipc::EPpState>>({
    {ipc::EPpStateDisconnect, "Disconnect"},
    {ipc::EPpState13A,        "13A"},
    {ipc::EPpState20A,        "20A"},
    {ipc::EPpState32A,        "32A"},
    {ipc::EPpState63A70A,     "63/70A"},
    {ipc::EPpStateError,      "Error"},
    {ipc::EPpStateInvalid,    "Invalid"},
});

constexpr auto kMcuStates = std::to_array<CTextRow<ipc::EMcuControlState>>({
    {ipc::EMcuControlStateBoot,      "Boot"},
    {ipc::EMcuControlStateDisabled,  "Disabled"},
    {ipc::EMcuControlStateEnabling,  "Enabling"},
    {ipc::EMcuControlStateEnabled,   "Enabled"},
    {ipc::EMcuControlStateDisabling, "Disabling"},
    {ipc::EMcuControlStateError,     "Error"},
});

constexpr auto kRelayStates = std::to_array<CTextRow<ipc::ERelayState>>({
    {ipc::ERelayStateDisabled, "Disabled"},
    {ipc::ERelayStateEnabled,  "Enabled"},
});

constexpr auto kMcuErrors = std::to_array<CTextRow<ipc::EMcuControlError>>({
    {ipc::EMcuControlErrorNoError,       "EMcuControlErrorNoError"},
    {ipc::EMcuControlErrorELD,           "EMcuControlErrorELD"},
    {ipc::EMcuControlErrorRelay,         "EMcuControlErrorRelay"},
    {ipc::EMcuControlErrorAda,           "EMcuControlErrorAda"},
    {ipc::EMcuControlErrorWatchdog,      "EMcuControlErrorWatchdog"},
    {ipc::EMcuControlErrorGroundMonitor, "EMcuControlErrorGroundMonitor"},
    {ipc::EMcuControlErrorTimeout,       "EMcuControlErrorTimeout"},
    {ipc::EMcuControlErrorPFD,           "EMcuControlErrorPFD"},
});

constexpr auto kFwUpdateStatuses = std::to_array<CTextRow<ipc::EFwUpdateStatus>>({
    {ipc::EFwUpdateStatusSuccess,             "Success"},
    {ipc::EFwUpdateStatusPackageMissing,      "Error: Firmware package file does not exist"},
    {ipc::EFwUpdateStatusNotIdle,             "Error: System is not idle"},
    {ipc::EFwUpdateStatusFirmwareInfoInvalid, "Error: Firmware info file is invalid"},
    {ipc::EFwUpdateStatusHardwareInfoInvalid, "Error: Hardware info file is invalid"},
    {ipc::EFwUpdateStatusSettingNotSaved,     "Error: Unable to save persistent setting"},
    {ipc::EFwUpdateStatusSettingNotLoaded,    "Error: Unable to load persistent setting"},
    {ipc::EFwUpdateStatusNoSpace,             "Error: No space available for needed files"},
    {ipc::EFwUpdateStatusCheckFailed,         "Error: Firmware package checks or programming failed"},
    {ipc::EFwUpdateStatusImageNotLoaded,      "Error: Firmware image not loaded after programming"},
    {ipc::EFwUpdateStatusInternalError,       "Error: Internal error"},
});

// clang-format on

constexpr std::string_view kUnknownState = "unknown state";
constexpr std::string_view kUnknownStatus = "unknown status";

}  // namespace

std::string CpStateToString(ipc::ECpState state) {
  return TextOf(kCpStates, state, kUnknownState);
}
std::string CpStateToString(const ipc::MCpState& state) {
  return CpStateToString(state.state());
}

std::string PpStateToString(ipc::EPpState state) {
  return TextOf(kPpStates, state, kUnknownState);
}
std::string PpStateToString(const ipc::MPpState& state) {
  return PpStateToString(state.state());
}

std::string McuStatusToString(ipc::EMcuControlState state) {
  return TextOf(kMcuStates, state, kUnknownStatus);
}
std::string McuStatusToString(const ipc::MMcuStatus& status) {
  return McuStatusToString(status.status());
}

std::string RelayStatusToString(ipc::ERelayState state) {
  return TextOf(kRelayStates, state, kUnknownStatus);
}
std::string RelayStatusToString(const ipc::MRelayStatus& status) {
  return RelayStatusToString(status.status());
}

std::string ErrorToString(ipc::EMcuControlError error) {
  return TextOf(kMcuErrors, error, kUnknownStatus);
}

std::string FwUpdateStatusToString(ipc::EFwUpdateStatus status) {
  return TextOf(kFwUpdateStatuses, status, "Unknown status");
}
std::string FwUpdateStatusToString(const ipc::MFwUpdateStatus& status) {
  const std::string text = FwUpdateStatusToString(status.status());
  return status.status() == ipc::EFwUpdateStatusSuccess
             ? fmt::format("{}, old FW: {}, new FW: {}", text, status.old_firmware(),
                           status.new_firmware())
             : text;
}

std::string SmcuHashToString(std::uint64_t hash, bool dirty) {
  return fmt::format("{:x}{}", hash, dirty ? " - dirty" : "");
}
