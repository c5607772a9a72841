// The daemon's log for the page: the newest lines, and what came since the last time.
#pragma once

#include <deque>
#include <string>

#include "virtualcharger/desk/messages.h"
#include "virtualcharger/scenario/daemonlog.h"

// Threads: one.
class CLogFeed {
 public:
  static constexpr std::size_t kKept = 500;

  // The file's space is given back behind the reader, unless it is to be kept.
  CLogFeed(const std::string& path, const CPageClock& clock, bool keepFile)
      : mClock(clock), mLog(path), mKeepFile(keepFile) {}

  // Takes in what was logged. The rows of the new lines.
  Json::Value TakeNew();

  // The rows that are kept.
  Json::Value Rows() const;

 private:
  const CPageClock& mClock;
  CDaemonLog mLog;
  const bool mKeepFile;
  std::deque<Json::Value> mRows;
};
