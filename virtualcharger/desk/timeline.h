// What happened in the last minutes, lane by lane: a row holds until its lane's next one.
#pragma once

#include <json/json.h>

#include <chrono>
#include <deque>
#include <map>
#include <string>

#include "virtualcharger/desk/messages.h"

// Holds the rows of kSpan, at most kMostRows of them, and each lane's row before those.
//
// Threads: one.
class CTimeline {
 public:
  using TimePoint = CPageClock::TimePoint;

  static constexpr std::chrono::minutes kSpan{10};
  static constexpr std::size_t kMostRows = 5000;

  explicit CTimeline(const CPageClock& clock) : mClock(clock) {}

  // The lane's value from a time on; the same one again is no row.
  void Set(const std::string& lane, TimePoint time, const Json::Value& value);
  // An error is a lane of its own.
  void SetError(int identifier, TimePoint time, bool on);
  // Something that happened, rather than a value that holds.
  void AddStep(TimePoint time, const std::string& text);

  // All rows.
  Json::Value Rows() const;
  // Those that came since the last time.
  Json::Value TakeNew();

 private:
  struct SRow {
    TimePoint time;
    std::string key;  // of the value that it replaces; empty for none
    Json::Value row;
  };

  void Add(const std::string& key, const std::string& lane, TimePoint time,
           const Json::Value& value);

  const CPageClock& mClock;
  std::deque<SRow> mRows;
  std::map<std::string, Json::Value> mValues;   // by key, as they are now
  std::map<std::string, Json::Value> mDropped;  // by key, the newest row that is no more in mRows
  std::size_t mNew = 0;                         // rows at the end of mRows
};
