// The platform's points in time: how they read, and to and from the system clock.
#pragma once

#include <chrono>
#include <ostream>

#include "platform/ipc/common.pb.h"

// The microseconds are a magnitude with the sign of the seconds. The point must lie within the
// system clock's range (the years 1678 to 2261).
std::chrono::system_clock::time_point ToSystemClock(const ipc::MTimestamp& timestamp);

// Cuts off what is below a microsecond. Before 1970 the microseconds are the negative remainder,
// stored in the unsigned field as it is: ToSystemClock does not read that back.
ipc::MTimestamp ToTimestamp(std::chrono::system_clock::time_point timePoint);

namespace ipc {

// Local time, for example "2024-01-31T12:00:00.000042+0100". Throws fmt::format_error when there is
// no such local time.
std::ostream& operator<<(std::ostream& stream, const MTimestamp& timestamp);

}  // namespace ipc
