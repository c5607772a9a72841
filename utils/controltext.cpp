#include "utils/controltext.h"

#include "utils/texttable.h"

namespace {

// clang-format off

constexpr auto kStates = std::to_array<CTextRow<ipc::EState>>({
    {ipc::EStateInvalid,       "Invalid"},
    {ipc::EStateUninitialized, "Uninitialized"},
    {ipc::EStateDisabled,      "Disabled"},
    {ipc::EStateEnabled,       "Enabled"},
    {ipc::EStateError,         "Error"},
    {ipc::EStateFatalError,    "FatalError"},
    {ipc::EStateCommission,    "Commission"},
});

constexpr auto kResults = std::to_array<CTextRow<ipc::EResult>>({
    {ipc::EResultOk,      "Ok"},
    {ipc::EResultIllegal, "Illegal"},
});

constexpr auto kFbEventTypes = std::to_array<CTextRow<ipc::EFbEventType>>({
    {ipc::EFbEventTypeAuthSuccess, "AuthSuccess"},
    {ipc::EFbEventTypeAuthFailure, "AuthFailure"},
    {ipc::EFbEventTypeTagSwipe,    "TagSwipe"},
    {ipc::EFbEventTypeIdentify,    "Identify"},
});

// clang-format on

}  // namespace

std::string StateToString(ipc::EState state) {
  return TextOf(kStates, state, "unknown state");
}
std::string StateToString(const ipc::MState& state) {
  return StateToString(state.state());
}

std::string ResultToString(ipc::EResult result) {
  return TextOf(kResults, result, "unknown result");
}
std::string ResultToString(const ipc::MResult& result) {
  return ResultToString(result.result());
}

std::string FbEventTypeToString(ipc::EFbEventType type) {
  return TextOf(kFbEventTypes, type, "Unknown");
}
std::string FbEventTypeToString(const ipc::MFbEventType& type) {
  return FbEventTypeToString(type.event());
}
