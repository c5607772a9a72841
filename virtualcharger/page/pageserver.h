// Serves the page on http://127.0.0.1:PORT/ and carries messages between it and the charger.
//
// Over HTTP there are only the page's files; everything else goes over one WebSocket a client, /ws,
// as text frames of one JSON object each.
//
// Who may do what: it listens on the loopback interface only. Host must be this server's own
// address (another name that leads here is a rebound one), and a WebSocket must come from this
// server's own page. Any program on the machine could do that, so who wants to change something
// also needs the token, which is new at each start: it stands in the fragment of the printed URL,
// which no browser sends, and the page sends it in its first message,
// {"type":"hello","token":"..."}. Without it a client may look; what it sends is answered with a
// refusal and never reaches the handler.
//
// What a client can cost is bounded: see the limits below. One that does not read is cut off when
// its queue is full and slows nobody; it gets a whole picture when it comes back.
#pragma once

#include <json/json.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

// Threads: called on the server's thread, so it must not wait. It may call the server.
class IPageHandler {
 public:
  // Never used again for another client.
  using ClientId = std::uint64_t;

  virtual ~IPageHandler() = default;

  // A client wants the whole picture: it gets nothing until CPageServer::Greet.
  virtual void OnHello(ClientId client, bool mayWrite) = 0;

  // An object from a client that has the token and has said hello.
  virtual void OnMessage(ClientId client, const Json::Value& message) = 0;
};

// Threads: every operation may be called from any thread and does not wait. What one thread hands
// over arrives in that order, so whoever greets and publishes from one thread needs no lock: a
// client gets its greeting and then exactly what is published after it.
class CPageServer {
 public:
  using ClientId = IPageHandler::ClientId;
  using TimePoint = std::chrono::steady_clock::time_point;

  static constexpr std::uint16_t kUsualPort = 8765;
  static constexpr std::size_t kMostClients = 64;              // a tile on another page is one
  static constexpr std::size_t kLargestRequest = 4UL * 1024;   // bytes of a request's header
  static constexpr std::size_t kLargestMessage = 16UL * 1024;  // bytes, from a client
  static constexpr std::size_t kLargestQueue = 1024UL * 1024;  // bytes that wait for one client
  static constexpr std::chrono::seconds kHandshakeLimit{5};    // for request and answer
  static constexpr std::chrono::seconds kSilenceLimit{30};     // pings go out before it is over

  struct SSettings {
    std::optional<std::uint16_t> port;  // 0: any; none: the usual one or the next that is free
    TimePoint begin;                    // the page's time 0
  };

  // What becomes of a message that still waits when the next of its kind comes.
  enum class EWaiting {
    Keep,
    Replace,  // it goes: the next one says all that it says
  };

  // Listens and serves from now on. The handler outlives the server. Throws std::runtime_error that
  // names the port and the way out.
  CPageServer(const SSettings& settings, IPageHandler& handler);
  CPageServer(const CPageServer&) = delete;
  CPageServer& operator=(const CPageServer&) = delete;

  // Cuts all clients off. The handler is not called any more. Not on the server's thread.
  ~CPageServer();

  std::uint16_t Port() const;

  // Without the token: for everybody.
  std::string Address() const;

  // With the token: for the one who started the charger.
  std::string Url() const;

  // Connected clients, greeted or not: nobody listens when there is none.
  std::size_t Clients() const;

  // The first message to a client that said hello. Nothing happens when it is gone.
  void Greet(ClientId client, std::string text);

  // To one client, greeted or not.
  void Send(ClientId client, std::string text);

  // To all greeted clients. What may be replaced is of one kind.
  void Publish(std::string text, EWaiting waiting = EWaiting::Keep);

  // To the greeted clients that have the token.
  void PublishToWriters(std::string text);

 private:
  class CCore;

  const std::unique_ptr<CCore> mCore;
};
