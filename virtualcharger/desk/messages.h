// Messages to the page: one JSON object each, times in milliseconds since the charger's begin.
#pragma once

#include <json/json.h>

#include <chrono>
#include <string>

// Tells times as the page counts them.
class CPageClock {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;

  explicit CPageClock(TimePoint begin) : mBegin(begin) {}

  TimePoint Begin() const { return mBegin; }

  // To the microsecond.
  double operator()(TimePoint time) const;

  // An object that has only its type and the time of now.
  Json::Value Message(const std::string& type) const;

 private:
  const TimePoint mBegin;
};

// On one line and in plain ASCII; bytes that are no UTF-8 are replaced.
std::string Compact(const Json::Value& message);

// "2026-11-21T12:00:00Z".
std::string Utc(std::chrono::system_clock::time_point time);
