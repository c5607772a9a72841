// One page that is connected: its WebSocket and what waits to be sent to it.
#pragma once

#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/message.hpp>
#include <boost/beast/websocket/stream.hpp>

#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <string>

#include "virtualcharger/page/pageserver.h"

// Held by its operations that are under way and by who tells it something.
// Threads: the server's.
class CPageClient : public std::enable_shared_from_this<CPageClient> {
 public:
  using Request = boost::beast::http::request<boost::beast::http::empty_body>;
  using Text = std::shared_ptr<const std::string>;
  using EWaiting = CPageServer::EWaiting;

  struct SEvents {
    std::function<void(const std::string&)> message;
    std::function<void()> end;  // once; nothing comes after it
  };

  CPageClient(boost::beast::tcp_stream stream, SEvents events);

  // Called once, before all else.
  void Accept(const Request& upgrade);

  // After the client's first message. Cuts the client off when too much waits for it.
  void Send(const Text& text, EWaiting waiting);

  // Tells the client that it broke a rule, and which.
  void Close(const char* reason);

 private:
  enum class EState { Open, Closing, Cut, Left };

  struct SWaiting {
    Text text;
    EWaiting waiting;
  };

  void Read();
  void Write();
  void DropReplaced();

  // Ends all operations; they report it later. What the client did not read is thrown away.
  void Cut();

  // Only where no caller holds on to this client.
  void Leave();

  boost::beast::websocket::stream<boost::beast::tcp_stream> mStream;
  boost::beast::flat_buffer mBuffer;
  const SEvents mEvents;
  std::deque<SWaiting> mQueue;  // the first one is being sent
  std::size_t mQueued = 0;      // bytes in mQueue
  EState mState = EState::Open;
};
