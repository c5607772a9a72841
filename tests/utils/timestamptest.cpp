#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>
#include <sstream>

#include "utils/timestamp.h"

namespace {

using namespace std::chrono_literals;
using TimePoint = std::chrono::system_clock::time_point;

ipc::MTimestamp Timestamp(int64_t seconds, uint32_t microseconds) {
  ipc::MTimestamp timestamp;
  timestamp.set_seconds(seconds);
  timestamp.set_microseconds(microseconds);
  return timestamp;
}

TEST(ATimestamp, TakesTheMicrosecondsWithTheSignOfTheSeconds) {
  EXPECT_EQ(ToSystemClock(Timestamp(5, 42)), TimePoint(5s + 42us));
  EXPECT_EQ(ToSystemClock(Timestamp(0, 42)), TimePoint(42us));
  EXPECT_EQ(ToSystemClock(Timestamp(-5, 42)), TimePoint(-5s - 42us));
}

TEST(ATimestamp, KeepsWholeMicrosecondsAndTheSignOfTheRest) {
  EXPECT_EQ(ToTimestamp(TimePoint(5s + 42us + 999ns)).SerializeAsString(),
            Timestamp(5, 42).SerializeAsString());
  EXPECT_EQ(ToTimestamp(TimePoint(-5s - 42us - 999ns)).SerializeAsString(),
            Timestamp(-5, static_cast<uint32_t>(-42)).SerializeAsString());
}

TEST(ATimestamp, ReadsAsLocalTimeWithItsOffset) {
  setenv("TZ", "XYZ-1", 1);
  tzset();
  std::ostringstream stream;
  stream << Timestamp(1'700'000'000, 42) << " " << Timestamp(-1, 999'999);
  EXPECT_EQ(stream.str(), "2023-11-14T23:13:20.000042+0100 1970-01-01T00:59:59.999999+0100");
  EXPECT_THROW(stream << Timestamp(std::numeric_limits<int64_t>::max(), 0), fmt::format_error);
  unsetenv("TZ");
  tzset();
}

}  // namespace
