// What crosses the wire between the daemon and its peers, for the page: the newest messages, and
// what came since the last time.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <set>
#include <string>
#include <utility>

#include "virtualcharger/desk/messages.h"

// Threads: one.
class CMessageFeed {
 public:
  static constexpr std::size_t kKept = 500;

  explicit CMessageFeed(const CPageClock& clock) : mClock(clock) {}

  // A peer's event "message", as in virtualcharger/peers/wirelog.h. A peer that was started again
  // counts from 1 again.
  void Take(const std::string& peer, std::int64_t number, const std::string& text);

  // The rows that are new or have ended since.
  Json::Value TakeNew();
  // The rows that are kept.
  Json::Value Rows() const;

 private:
  void Begin(const std::string& peer, std::int64_t number, const Json::Value& message);
  void End(std::uint64_t id, const Json::Value& message);
  Json::Value* Row(std::uint64_t id);

  const CPageClock& mClock;
  std::deque<Json::Value> mRows;  // their ids follow one another
  std::uint64_t mFirst = 1;       // the first one's id
  std::map<std::pair<std::string, std::int64_t>, std::uint64_t> mUnderWay;  // ids
  std::set<std::uint64_t> mNew;
};
