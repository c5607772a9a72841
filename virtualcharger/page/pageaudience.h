// The clients of the page: lets them in, hears them, tells them.
#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "virtualcharger/page/pageclient.h"
#include "virtualcharger/page/pageserver.h"

// Threads: the server's, but for Size.
class CPageAudience {
 public:
  using ClientId = CPageServer::ClientId;
  using TimePoint = CPageServer::TimePoint;

  CPageAudience(TimePoint begin, IPageHandler& handler);

  // 128 bits, never the same again.
  const std::string& Token() const { return mToken; }

  bool IsFull() const { return Size() >= CPageServer::kMostClients; }
  std::size_t Size() const { return mSize; }

  void Admit(boost::beast::tcp_stream stream, const CPageClient::Request& upgrade);

  void Greet(ClientId client, const CPageClient::Text& text);
  void Send(ClientId client, const CPageClient::Text& text);
  void Publish(const CPageClient::Text& text, CPageServer::EWaiting waiting);
  void PublishToWriters(const CPageClient::Text& text);

 private:
  struct SMember {
    std::shared_ptr<CPageClient> client;
    bool knocked = false;  // said hello
    bool greeted = false;
    bool mayWrite = false;
  };

  void Hear(ClientId id, const std::string& text);
  void Remove(ClientId id);
  std::string Refusal(const Json::Value& message) const;

  const TimePoint mBegin;
  IPageHandler& mHandler;
  const std::string mToken;
  std::map<ClientId, SMember> mMembers;
  std::atomic<std::size_t> mSize = 0;  // of mMembers
  ClientId mLast = 0;
};
