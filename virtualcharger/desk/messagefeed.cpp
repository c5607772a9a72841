#include "virtualcharger/desk/messagefeed.h"

#include <sstream>

namespace {

CPageClock::TimePoint Time(const Json::Value& message) {
  return CPageClock::TimePoint(std::chrono::microseconds(message["t"].asInt64()));
}

}  // namespace

void CMessageFeed::Take(const std::string& peer, std::int64_t number, const std::string& text) {
  Json::Value message;
  std::istringstream stream(text);
  const bool understood =
      Json::parseFromStream(Json::CharReaderBuilder(), stream, &message, nullptr);
  if (!understood || !message.isObject()) return;
  if (message.isMember("from")) {
    Begin(peer, number, message);
  } else if (const auto begun = mUnderWay.extract({peer, number})) {
    End(begun.mapped(), message);
  }
}

Json::Value CMessageFeed::TakeNew() {
  Json::Value rows(Json::arrayValue);
  for (const auto id : mNew) {
    if (const auto* row = Row(id)) rows.append(*row);
  }
  mNew.clear();
  return rows;
}

Json::Value CMessageFeed::Rows() const {
  Json::Value rows(Json::arrayValue);
  for (const auto& row : mRows) rows.append(row);
  return rows;
}

void CMessageFeed::Begin(const std::string& peer, std::int64_t number, const Json::Value& message) {
  auto row = message;
  const auto id = mFirst + mRows.size();
  row["id"] = static_cast<Json::UInt64>(id);
  row["t"] = mClock(Time(message));
  row["verdict"] = "";
  row["ok"] = true;
  row["ms"] = Json::Value();
  mRows.push_back(std::move(row));
  mNew.insert(id);
  if (mRows.size() > kKept) {
    mRows.pop_front();
    ++mFirst;
  }
  const auto [place, isNew] = mUnderWay.try_emplace({peer, number}, id);
  if (isNew) return;
  Json::Value lost = message;
  lost["verdict"] = "the peer has ended";
  lost["ok"] = false;
  End(place->second, lost);
  place->second = id;
}

void CMessageFeed::End(std::uint64_t id, const Json::Value& message) {
  auto* row = Row(id);
  if (row == nullptr) return;
  (*row)["verdict"] = message["verdict"];
  (*row)["ok"] = message["ok"];
  (*row)["ms"] = mClock(Time(message)) - (*row)["t"].asDouble();
  mNew.insert(id);
}

Json::Value* CMessageFeed::Row(std::uint64_t id) {
  return id >= mFirst && id - mFirst < mRows.size() ? &mRows[id - mFirst] : nullptr;
}
