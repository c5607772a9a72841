#include "virtualcharger/desk/messages.h"

#include <fmt/chrono.h>

double CPageClock::operator()(TimePoint time) const {
  const auto microseconds = std::chrono::round<std::chrono::microseconds>(time - mBegin);
  return static_cast<double>(microseconds.count()) / 1000.0;
}

Json::Value CPageClock::Message(const std::string& type) const {
  Json::Value message(Json::objectValue);
  message["type"] = type;
  message["now"] = (*this)(std::chrono::steady_clock::now());
  return message;
}

std::string Compact(const Json::Value& message) {
  static const Json::StreamWriterBuilder builder = [] {
    Json::StreamWriterBuilder compact;
    compact["indentation"] = "";
    compact["emitUTF8"] = false;
    compact["precisionType"] = "decimal";
    compact["precision"] = 3;
    return compact;
  }();
  return Json::writeString(builder, message);
}

std::string Utc(std::chrono::system_clock::time_point time) {
  return fmt::format("{:%FT%TZ}", fmt::gmtime(std::chrono::system_clock::to_time_t(time)));
}
