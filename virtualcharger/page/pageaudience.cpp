#include "virtualcharger/page/pageaudience.h"

#include <fmt/format.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <optional>
#include <system_error>
#include <utility>

namespace {

constexpr int kDepthLimit = 16;

std::string NewToken() {
  std::array<unsigned char, 16> bytes{};
  if (getentropy(bytes.data(), bytes.size()) != 0) {
    throw std::system_error(errno, std::generic_category(), "no random numbers for the token");
  }
  return fmt::format("{:02x}", fmt::join(bytes, ""));
}

// In a time that tells nothing about where they differ.
bool IsSame(const std::string& left, const std::string& right) {
  unsigned difference = left.size() == right.size() ? 0 : 1;
  for (std::size_t index = 0; index < left.size() && index < right.size(); ++index) {
    difference |= static_cast<unsigned>(left[index] ^ right[index]);
  }
  return difference == 0;
}

std::optional<Json::Value> ParseObject(const std::string& text) {
  Json::CharReaderBuilder builder;
  Json::CharReaderBuilder::strictMode(&builder.settings_);
  builder["stackLimit"] = kDepthLimit;
  const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  Json::Value root;
  try {
    if (!reader->parse(text.data(), text.data() + text.size(), &root, nullptr)) return std::nullopt;
  } catch (const Json::Exception&) {  // too deep
    return std::nullopt;
  }
  return root.isObject() ? std::optional(std::move(root)) : std::nullopt;
}

std::string TextOf(const Json::Value& message, const char* key) {
  const Json::Value& value = message[key];
  return value.isString() ? value.asString() : "";
}

}  // namespace

CPageAudience::CPageAudience(TimePoint begin, IPageHandler& handler)
    : mBegin(begin), mHandler(handler), mToken(NewToken()) {}

void CPageAudience::Admit(boost::beast::tcp_stream stream, const CPageClient::Request& upgrade) {
  const ClientId id = ++mLast;
  auto client = std::make_shared<CPageClient>(
      std::move(stream),
      CPageClient::SEvents{[this, id](const std::string& text) { Hear(id, text); },
                           [this, id] { Remove(id); }});
  mMembers.emplace(id, SMember{client});
  mSize = mMembers.size();
  client->Accept(upgrade);
}

void CPageAudience::Greet(ClientId id, const CPageClient::Text& text) {
  const auto found = mMembers.find(id);
  if (found == mMembers.end()) return;
  found->second.greeted = true;
  found->second.client->Send(text, CPageServer::EWaiting::Keep);
}

void CPageAudience::Send(ClientId id, const CPageClient::Text& text) {
  const auto found = mMembers.find(id);
  if (found != mMembers.end()) found->second.client->Send(text, CPageServer::EWaiting::Keep);
}

void CPageAudience::Publish(const CPageClient::Text& text, CPageServer::EWaiting waiting) {
  for (const auto& [id, member] : mMembers) {
    if (member.greeted) member.client->Send(text, waiting);
  }
}

void CPageAudience::PublishToWriters(const CPageClient::Text& text) {
  for (const auto& [id, member] : mMembers) {
    if (member.greeted && member.mayWrite) member.client->Send(text, CPageServer::EWaiting::Keep);
  }
}

void CPageAudience::Hear(ClientId id, const std::string& text) {
  auto& member = mMembers.at(id);
  const auto message = ParseObject(text);
  const bool hello = message && TextOf(*message, "type") == "hello";
  if (!message || hello == member.knocked) {
    member.client->Close(message ? "the first message and only that one is hello"
                                 : "a message is one JSON object");
  } else if (hello) {
    member.knocked = true;
    member.mayWrite = IsSame(TextOf(*message, "token"), mToken);
    mHandler.OnHello(id, member.mayWrite);
  } else if (member.mayWrite) {
    mHandler.OnMessage(id, *message);
  } else {
    Send(id, std::make_shared<const std::string>(Refusal(*message)));
  }
}

void CPageAudience::Remove(ClientId id) {
  mMembers.erase(id);
  mSize = mMembers.size();
}

std::string CPageAudience::Refusal(const Json::Value& message) const {
  const std::chrono::duration<double, std::milli> now = std::chrono::steady_clock::now() - mBegin;
  Json::Value refusal;
  refusal["type"] = "done";
  refusal["now"] = now.count();
  refusal["id"] = message["id"];
  refusal["ok"] = false;
  refusal["text"] =
      "this page may only look; to steer the charger, open the whole URL, with what stands behind "
      "the #, that virtual-charger printed in its terminal when it started";
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  return Json::writeString(builder, refusal);
}
