// How diagnostics signals read: short codes for their identifiers, and their values.
#pragma once

#include <ostream>
#include <string>

#include "platform/ipc/diagnostics.pb.h"

// The counters that outlive a restart; "Unknown ID" for another identifier.
std::string PersistentIdToString(ipc::ESignalIdentifier identifier);

// "UnknownStatus" for an identifier that is no event.
std::string EventToString(ipc::ESignalIdentifier identifier);

// The status notification's code of an error or a warning; "Unspecified" for one without a code.
std::string StatusNotificationIdentifierToInfo(ipc::ESignalIdentifier identifier);

namespace ipc {

// The value alone, a boolean as 1 or 0. Nothing for a 64-bit value or none at all.
std::ostream& operator<<(std::ostream& stream, const MDiagnosticsData& data);

// The values: "[1, 2]".
std::ostream& operator<<(std::ostream& stream, const MDiagnosticsSignal& signal);

}  // namespace ipc
