// How the states of processes, the outcomes of requests and feedback events read.
#pragma once

#include <string>

#include "platform/ipc/common.pb.h"
#include "platform/ipc/feedback.pb.h"
#include "platform/ipc/genericcontrol.pb.h"

// "unknown state" for another value.
std::string StateToString(ipc::EState state);
std::string StateToString(const ipc::MState& state);

// "unknown result" for another value.
std::string ResultToString(ipc::EResult result);
std::string ResultToString(const ipc::MResult& result);

// "Unknown" for another value.
std::string FbEventTypeToString(ipc::EFbEventType type);
std::string FbEventTypeToString(const ipc::MFbEventType& type);
