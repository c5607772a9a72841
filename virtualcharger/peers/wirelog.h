// Tells what crosses the wire at a peer, message by message, for people who watch.
//
// Each message is an event "message NUMBER JSON", once when it begins:
//   {"t": 17, "from": "daemon", "to": "diagnostics", "service": "Diagnostics",
//    "method": "SendSignal", "kind": "call", "text": "LED state = Green/On"}
// and once when it has ended: {"t": 18, "verdict": "Ok", "ok": true}. Times are microseconds of the
// steady clock, which all processes of the machine share; numbers count from 1.
#pragma once

#include <json/json.h>

#include <atomic>
#include <cstdint>
#include <string>
#include <utility>

#include "platform/ipc/common.pb.h"
#include "virtualcharger/peers/peer.h"

// Threads: any.
class CWireLog {
 public:
  // A message on its way; where nobody says how it ended, it failed.
  class CMessage {
   public:
    CMessage(const CWireLog& log, std::uint64_t number) : mLog(log), mNumber(number) {}
    CMessage(const CMessage&) = delete;
    CMessage& operator=(const CMessage&) = delete;
    ~CMessage();

    void End(const std::string& verdict, bool ok = true);
    // "Ok", or "Illegal" with the text.
    void End(const ipc::MResult& result);

   private:
    const CWireLog& mLog;
    const std::uint64_t mNumber;
    bool mEnded = false;
  };

  CWireLog(std::string peer, PeerEvents events)
      : mPeer(std::move(peer)), mEvents(std::move(events)) {}

  // From the daemon, which waits for the reply.
  CMessage Called(const std::string& service, const std::string& method,
                  const std::string& text = {}) const;
  // From the peer to the daemon: a request, and what a service tells its subscribers.
  CMessage Call(const std::string& service, const std::string& method,
                const std::string& text = {}) const;
  CMessage Notification(const std::string& service, const std::string& method,
                        const std::string& text) const;
  // From the daemon, which gets no reply.
  void Report(const std::string& service, const std::string& method, const std::string& text) const;
  // Somebody subscribed or went; so many are left.
  void Subscribers(const std::string& service, const std::string& method, std::size_t count) const;

 private:
  std::uint64_t Begin(bool fromDaemon, const char* kind, const std::string& service,
                      const std::string& method, const std::string& text) const;
  void Tell(std::uint64_t number, const Json::Value& message) const;

  const std::string mPeer;
  const PeerEvents mEvents;
  mutable std::atomic<std::uint64_t> mLast = 0;
};
