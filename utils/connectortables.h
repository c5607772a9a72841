// What the lamp shows: a connector's states, events and errors as tables. An event goes before the
// oldest error, that before the disabled lamp, and that before the state of the connector.
#pragma once

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "platform/ipc/signalidentifier.pb.h"
#include "utils/ledstate.h"

// The session manager's states, reduced to what the lamp can tell apart.
enum class EHmiState : int32_t {
  EUnknown = 0,  // nothing heard from the session manager yet
  EAvailable,
  EUnavailable,
  ECharging,
  EConnected,
  EAuthorized,
  EChanging,
};

struct CErrorMode {
  ipc::ESignalIdentifier identifier;
  ELedMode mode;
};

// clang-format off

// By the number of the connector state.
inline constexpr std::array<EHmiState, 13> kHmiStates{
    EHmiState::EUnavailable,  //  0 unavailable
    EHmiState::EAvailable,    //  1 available
    EHmiState::EUnavailable,  //  2 reserved
    EHmiState::EUnavailable,  //  3 starting
    EHmiState::EConnected,    //  4 connected
    EHmiState::EAuthorized,   //  5 authorized
    EHmiState::ECharging,     //  6 charging
    EHmiState::EAuthorized,   //  7 suspended by the car
    EHmiState::EAuthorized,   //  8 suspended by the charger
    EHmiState::EAuthorized,   //  9 finishing
    EHmiState::EChanging,     // 10 changing
    EHmiState::EAuthorized,   // 11 scheduled
    EHmiState::ECharging,     // 12 charging, limited
};

// By the HMI state; empty leaves the lamp as it is.
inline constexpr std::array<std::optional<CLedState>, 7> kStateLeds{{
    CLedState{ELedColor::EYellow, ELedMode::EOn},         // unknown
    CLedState{ELedColor::EGreen,  ELedMode::EOn},         // available
    CLedState{ELedColor::EYellow, ELedMode::EOn},         // unavailable
    CLedState{ELedColor::EBlue,   ELedMode::EPulsating},  // charging
    CLedState{ELedColor::EGreen,  ELedMode::EOn},         // connected
    CLedState{ELedColor::EBlue,   ELedMode::EOn},         // authorized
    std::nullopt,                                         // changing
}};

// Floors of the brightness in percent, for what must be seen on a lamp that is set very dark: of
// errors; of the disabled lamp and of "which charger is this?".
inline constexpr std::uint8_t kErrorFloor = 10;
inline constexpr std::uint8_t kFullFloor = 100;

inline constexpr CLedState kDisabledLed{ELedColor::EYellow, ELedMode::EOn};

// By the event.
inline constexpr std::array<CLedState, 3> kEventLeds{{
    {ELedColor::EGreen, ELedMode::EFlashing},  // authorization accepted
    {ELedColor::ERed,   ELedMode::EFlashing},  // authorization refused
    {ELedColor::EWhite, ELedMode::EFlashing},  // "which charger is this?"
}};

// How long they are shown.
inline constexpr std::chrono::milliseconds kAuthDisplayTime{1000};
inline constexpr std::chrono::milliseconds kIdentifyDisplayTime{5000};

// Errors are red. Those with a blink code of their own; every other one has kOtherErrorMode.
inline constexpr ELedMode kOtherErrorMode = ELedMode::EBlink2;
inline constexpr std::array<CErrorMode, 13> kErrorModes{{
    {ipc::ESignalIdentifierChargeControlCpShort,          ELedMode::EBlink1},  // 1002
    {ipc::ESignalIdentifierChargeControlPpError,          ELedMode::EBlink1},  // 1003
    {ipc::ESignalIdentifierChargeControlCpLowError,       ELedMode::EBlink3},  // 1004
    {ipc::ESignalIdentifierChargeControlEvTimeoutError,   ELedMode::EBlink3},  // 1005
    {ipc::ESignalIdentifierChargeControlCpOutOfSyncError, ELedMode::EBlink1},  // 1006
    {ipc::ESignalIdentifierSafetyMcuEldError,             ELedMode::EBlink1},  // 1057
    {ipc::ESignalIdentifierSafetyMcuGroundMonitorError,   ELedMode::EBlink1},  // 1061
    {ipc::ESignalIdentifierSafetyMcuPfdError,             ELedMode::EBlink1},  // 1065
    {ipc::ESignalIdentifierCableRatingExceeded,           ELedMode::EBlink1},  // 1252
    {ipc::ESignalIdentifierPowerFactorLimitError,         ELedMode::EBlink1},  // 1253
    {ipc::ESignalIdentifierInstallationLimitExceeded,     ELedMode::EBlink1},  // 1254
    {ipc::ESignalIdentifierPhysicalCurrentLimitExceeded,  ELedMode::EBlink1},  // 1255
    {ipc::ESignalIdentifierPhaseImbalanceExceeded,        ELedMode::EBlink1},  // 1256
}};

// clang-format on

inline CLedState LedOfError(std::int32_t identifier) {
  const auto* const row = std::ranges::find(kErrorModes, identifier, &CErrorMode::identifier);
  return {ELedColor::ERed, row == kErrorModes.end() ? kOtherErrorMode : row->mode};
}

// Empty for a number that is no known state, which shows as available.
constexpr std::optional<EHmiState> HmiStateOf(std::int32_t connectorState) {
  if (connectorState < 0 || static_cast<std::size_t>(connectorState) >= kHmiStates.size()) {
    return std::nullopt;
  }
  return kHmiStates[static_cast<std::size_t>(connectorState)];
}
