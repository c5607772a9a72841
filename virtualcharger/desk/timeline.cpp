#include "virtualcharger/desk/timeline.h"

#include <algorithm>
#include <utility>

void CTimeline::Set(const std::string& lane, TimePoint time, const Json::Value& value) {
  Add(lane, lane, time, value);
}

void CTimeline::SetError(int identifier, TimePoint time, bool on) {
  const auto key = "error " + std::to_string(identifier);
  if (!on && !mValues.contains(key)) return;
  Json::Value value;
  value["identifier"] = identifier;
  value["on"] = on;
  Add(key, "error", time, value);
}

void CTimeline::AddStep(TimePoint time, const std::string& text) {
  Add("", "step", time, text);
}

Json::Value CTimeline::Rows() const {
  Json::Value rows(Json::arrayValue);
  for (const auto& [key, row] : mDropped) rows.append(row);
  for (const auto& entry : mRows) rows.append(entry.row);
  return rows;
}

Json::Value CTimeline::TakeNew() {
  Json::Value rows(Json::arrayValue);
  for (auto index = mRows.size() - mNew; index < mRows.size(); ++index) {
    rows.append(mRows[index].row);
  }
  mNew = 0;
  return rows;
}

void CTimeline::Add(const std::string& key, const std::string& lane, TimePoint time,
                    const Json::Value& value) {
  if (!key.empty()) {
    const auto [last, isNew] = mValues.try_emplace(key, value);
    if (!isNew && last->second == value) return;
    last->second = value;
  }
  Json::Value row;
  row["t"] = mClock(time);
  row["lane"] = lane;
  row["value"] = value;
  mRows.push_back({time, key, std::move(row)});
  ++mNew;
  while (mRows.size() > kMostRows || mRows.front().time < time - kSpan) {
    auto& oldest = mRows.front();
    if (!oldest.key.empty()) mDropped[oldest.key] = std::move(oldest.row);
    mRows.pop_front();
    mNew = std::min(mNew, mRows.size());
  }
}
