#include "virtualcharger/desk/logfeed.h"

Json::Value CLogFeed::TakeNew() {
  mLog.Read(false);
  Json::Value rows(Json::arrayValue);
  for (const auto& line : mLog.Lines()) {
    Json::Value row;
    row["t"] = mClock(line.time);
    row["level"] = static_cast<int>(line.level);
    row["thread"] = line.thread;
    row["text"] = line.text;
    mRows.push_back(row);
    if (mRows.size() > kKept) mRows.pop_front();
    rows.append(std::move(row));
  }
  mLog.ForgetAll();
  if (!mKeepFile) mLog.GiveBack();
  return rows;
}

Json::Value CLogFeed::Rows() const {
  Json::Value rows(Json::arrayValue);
  for (const auto& row : mRows) rows.append(row);
  return rows;
}
