// What a peer sends is looked at before any service or handler sees it.
//
// Each check returns a text that names the field and what was expected, or an empty text when the
// message is good. Enumeration values that the layers above have an answer of their own for (an
// unknown connector state, feedback event, signal identifier, notification type, lifecycle state
// or result, which a newer peer may well send) pass; everything that they could only fail on does
// not. Of notifications, only errors reach a handler that looks into them.
#pragma once

#include <string>

#include "platform/ipc/common.pb.h"
#include "platform/ipc/diagnostics.pb.h"
#include "platform/ipc/feedback.pb.h"
#include "platform/ipc/genericcontrol.pb.h"
#include "platform/ipc/logconfig.pb.h"
#include "platform/ipc/meter.pb.h"
#include "platform/ipc/sessionmanager.pb.h"

namespace Rpc {

// Connectors of this charger: an instance is 0 (all) or one of them.
inline constexpr int kConnectorCount = 1;

// The largest message that is taken, in bytes.
inline constexpr int kMessageLimit = 64 * 1024;

std::string Check(const ipc::MEmpty& message);
std::string Check(const ipc::MInstanceType& message);
std::string Check(const ipc::MResult& message);
std::string Check(const ipc::MState& message);
std::string Check(const ipc::MAlive& message);
std::string Check(const ipc::MLogConfig& message);
std::string Check(const ipc::MFeedbackEvent& message);
std::string Check(const ipc::MDiagnosticsSignal& message);
std::string Check(const ipc::MDiagnosticsRequest& message);
std::string Check(const ipc::MDiagnosticsNotification& message);
std::string Check(const ipc::MConnectorInfo& message);
std::string Check(const ipc::MAuthorizeRequest& message);
std::string Check(const ipc::MConnectorStateNotification& message);
std::string Check(const ipc::MDisplayBrightness& message);

}  // namespace Rpc
