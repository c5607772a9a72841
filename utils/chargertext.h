// How the charger's electrical side, its safety microcontroller and firmware updates read.
#pragma once

#include <cstdint>
#include <string>

#include "platform/ipc/charger.pb.h"

// "unknown state" for another value.
std::string CpStateToString(ipc::ECpState state);
std::string CpStateToString(const ipc::MCpState& state);
std::string PpStateToString(ipc::EPpState state);
std::string PpStateToString(const ipc::MPpState& state);

// "unknown status" for another value.
std::string McuStatusToString(ipc::EMcuControlState state);
std::string McuStatusToString(const ipc::MMcuStatus& status);
std::string RelayStatusToString(ipc::ERelayState state);
std::string RelayStatusToString(const ipc::MRelayStatus& status);
std::string ErrorToString(ipc::EMcuControlError error);

// "Unknown status" for another value. After a success the record names both firmwares.
std::string FwUpdateStatusToString(ipc::EFwUpdateStatus status);
std::string FwUpdateStatusToString(const ipc::MFwUpdateStatus& status);

// The safety microcontroller's firmware: "1a2b", or "1a2b - dirty" for a build of changed sources.
std::string SmcuHashToString(std::uint64_t hash, bool dirty);
