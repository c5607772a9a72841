#include "virtualcharger/desk/lampmessage.h"

std::optional<Json::Value> CLampMessage::Next(TimePoint now) {
  const auto writes = mWrites.Since(mTold);
  if (writes.empty() && mLast && now - *mLast < kRefresh) return std::nullopt;
  mTold += writes.size();
  mLast = now;
  return From(writes.empty() ? now : writes.back().time);
}

Json::Value CLampMessage::From(TimePoint from) const {
  const auto to = std::chrono::steady_clock::now() + kAhead;
  auto message = mClock.Message("lamp");
  message["from"] = mClock(from);
  message["to"] = mClock(to);
  message["channels"] = Json::Value(Json::arrayValue);
  for (const auto& channel : mLight.Channels()) {
    Json::Value segments(Json::arrayValue);
    for (const auto& [start, duration, level] : channel->Segments(from, to)) {
      Json::Value segment(Json::arrayValue);
      segment.append(mClock(start));
      segment.append(std::chrono::duration<double, std::milli>(duration).count());
      segment.append(level);
      segments.append(std::move(segment));
    }
    message["channels"].append(std::move(segments));
  }
  return message;
}
