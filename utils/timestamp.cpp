#include "utils/timestamp.h"

#include <fmt/chrono.h>

#include <cstdint>
#include <ctime>
#include <utility>

namespace {

using std::chrono::duration_cast;
using std::chrono::microseconds;
using std::chrono::nanoseconds;
using std::chrono::seconds;
using std::chrono::system_clock;

}  // namespace

system_clock::time_point ToSystemClock(const ipc::MTimestamp& timestamp) {
  const microseconds magnitude(timestamp.microseconds());
  const nanoseconds sinceEpoch =
      seconds(timestamp.seconds()) + (timestamp.seconds() < 0 ? -magnitude : magnitude);
  return system_clock::time_point(duration_cast<system_clock::duration>(sinceEpoch));
}

ipc::MTimestamp ToTimestamp(system_clock::time_point timePoint) {
  const nanoseconds sinceEpoch = timePoint.time_since_epoch();
  const auto whole = duration_cast<seconds>(sinceEpoch);
  const auto rest = duration_cast<microseconds>(sinceEpoch - whole);
  ipc::MTimestamp timestamp;
  timestamp.set_seconds(whole.count());
  timestamp.set_microseconds(static_cast<std::uint32_t>(rest.count()));
  return timestamp;
}

std::ostream& ipc::operator<<(std::ostream& stream, const MTimestamp& timestamp) {
  if (!std::in_range<std::time_t>(timestamp.seconds())) {
    throw fmt::format_error("time_t value out of range");
  }
  const std::tm local = fmt::localtime(static_cast<std::time_t>(timestamp.seconds()));
  return stream << fmt::format("{0:%Y-%m-%dT%H:%M:%S}.{1:06d}{0:%z}", local,
                               timestamp.microseconds());
}
