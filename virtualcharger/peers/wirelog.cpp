#include "virtualcharger/peers/wirelog.h"

#include <fmt/format.h>

#include <chrono>

#include "utils/controltext.h"

namespace {

Json::Int64 Microseconds() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::microseconds>(now).count();
}

}  // namespace

CWireLog::CMessage::~CMessage() {
  if (!mEnded) End("failed", false);
}

void CWireLog::CMessage::End(const std::string& verdict, bool ok) {
  mEnded = true;
  Json::Value message;
  message["t"] = Microseconds();
  message["verdict"] = verdict;
  message["ok"] = ok;
  mLog.Tell(mNumber, message);
}

void CWireLog::CMessage::End(const ipc::MResult& result) {
  const auto text = result.text().empty() ? "" : ": " + result.text();
  End(ResultToString(result) + text, result.result() == ipc::EResultOk);
}

CWireLog::CMessage CWireLog::Called(const std::string& service, const std::string& method,
                                    const std::string& text) const {
  return {*this, Begin(true, "call", service, method, text)};
}

CWireLog::CMessage CWireLog::Call(const std::string& service, const std::string& method,
                                  const std::string& text) const {
  return {*this, Begin(false, "call", service, method, text)};
}

CWireLog::CMessage CWireLog::Notification(const std::string& service, const std::string& method,
                                          const std::string& text) const {
  return {*this, Begin(false, "notification", service, method, text)};
}

void CWireLog::Report(const std::string& service, const std::string& method,
                      const std::string& text) const {
  CMessage(*this, Begin(true, "report", service, method, text)).End("");
}

void CWireLog::Subscribers(const std::string& service, const std::string& method,
                           std::size_t count) const {
  const auto text = fmt::format("{} subscribed", count == 0 ? "nobody" : std::to_string(count));
  CMessage(*this, Begin(true, "call", service, method, text)).End("");
}

std::uint64_t CWireLog::Begin(bool fromDaemon, const char* kind, const std::string& service,
                              const std::string& method, const std::string& text) const {
  Json::Value message;
  message["t"] = Microseconds();
  message["from"] = fromDaemon ? "daemon" : mPeer;
  message["to"] = fromDaemon ? mPeer : "daemon";
  message["service"] = service;
  message["method"] = method;
  message["kind"] = kind;
  message["text"] = text;
  const auto number = ++mLast;
  Tell(number, message);
  return number;
}

void CWireLog::Tell(std::uint64_t number, const Json::Value& message) const {
  static const Json::StreamWriterBuilder builder = [] {
    Json::StreamWriterBuilder compact;
    compact["indentation"] = "";
    compact["emitUTF8"] = false;
    return compact;
  }();
  mEvents(fmt::format("message {} {}", number, Json::writeString(builder, message)));
}
