#include "utils/currentcontroltext.h"

#include <algorithm>
#include <array>

namespace {

struct CSource {
  ipc::ECurrentControlSource source;
  std::string_view name;
  std::string_view humanReadable;
};

// clang-format off
constexpr auto kSources = std::to_array<CSource>({
    {ipc::ECurrentControlSourceThermal,                "ECurrentControlThermal",                "High temperature"},
    {ipc::ECurrentControlSourceConfigurationLimit,     "ECurrentControlConfigurationLimit",     "Installation limit"},
    {ipc::ECurrentControlSourceBop,                    "ECurrentControlBop",                    "Dynamic load balancing"},
    {ipc::ECurrentControlSourceLoadBal,                "ECurrentControlLoadBal",                "Group load balancing"},
    {ipc::ECurrentControlSourceUserCable,              "ECurrentControlUserCable",              "Charging cable"},
    {ipc::ECurrentControlSourceOvercurrentProtection,  "ECurrentControlOvercurrentProtection",  "Overcurrent protection"},
    {ipc::ECurrentControlSourceHardwareLimit,          "ECurrentControlHardwareLimit",          "Hardware limitation"},
    {ipc::ECurrentControlSourcePowerFactor,            "ECurrentControlPowerFactor",            "Power factor"},
    {ipc::ECurrentControlSourceOcppSmartCharging,      "ECurrentControlOcppSmartCharging",      "OCPP smart charging"},
    {ipc::ECurrentControlSourceVDEPhaseImbalance,      "ECurrentControlVDEPhaseImbalance",      "Phase imbalance"},
    {ipc::ECurrentControlSourceLocalScheduledCharging, "ECurrentControlLocalScheduledCharging", "Local scheduled charging"},
    {ipc::ECurrentControlSourceSolarCharging,          "ECurrentControlSolarCharging",          "Solar charging"},
    {ipc::ECurrentControlSourceUserLimitCurrent,       "ECurrentControlUserLimitCurrent",       "Current limiter"},
    {ipc::ECurrentControlSourceLocalRestApi,           "ECurrentControlLocalRestApi",           "Local REST API"},
    {ipc::ECurrentControlSourceLocalModbusApi,         "ECurrentControlLocalModbusApi",         "Local Modbus API"},
    {ipc::ECurrentControlSourcePowerLimitInput,        "ECurrentControlPowerLimitInput",        "External power limit"},
    {ipc::ECurrentControlSourceHouseholdPowerLimit,    "ECurrentControlHouseholdPowerLimit",    "Household power limit"},
    {ipc::ECurrentControlSourceSystemBalancer,         "ECurrentControlSystemBalancer",         "System current balancer"},
    {ipc::ECurrentControlSourceInternalPowerLimiter,   "ECurrentControlInternalPowerLimiter",   "Internal power limit"},
    {ipc::ECurrentControlSourceDynamicTariffCharging,  "ECurrentControlDynamicTariffCharging",  "Dynamic tariff charging"},
});
// clang-format on

}  // namespace

std::string SourceToString(ipc::ECurrentControlSource source) {
  const auto row = std::ranges::find(kSources, source, &CSource::source);
  return row == kSources.end() ? "Unknown source" : std::string(row->name);
}

std::optional<std::string> SignalValueToHumanReadableString(std::string_view text) {
  const auto row = std::ranges::find(kSources, text, &CSource::name);
  return row == kSources.end() ? std::nullopt : std::optional<std::string>(row->humanReadable);
}
