// One connection from its first byte to its answer: a file, an error, or a WebSocket.
#pragma once

#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "virtualcharger/page/pageaudience.h"
#include "virtualcharger/page/pagefiles.h"

// Held by its operations that are under way.
// Threads: the server's.
class CPageConnection : public std::enable_shared_from_this<CPageConnection> {
 public:
  // The place is held as long as the connection has not become a WebSocket or ended.
  CPageConnection(boost::asio::ip::tcp::socket socket, std::uint16_t port, CPageAudience& audience,
                  std::shared_ptr<const void> place);

  // Called once.
  void Serve();

 private:
  using Response = boost::beast::http::response<boost::beast::http::string_body>;

  void Answer(boost::beast::error_code error);
  void AnswerRequest();
  void RespondWithFile(std::string_view target);
  void Respond(unsigned status, std::string_view type, std::string body,
               const SPageFile* file = nullptr);

  // Reads until the other side has closed: closing first would destroy an answer under way.
  void Drain();

  boost::beast::tcp_stream mStream;
  const std::uint16_t mPort;
  CPageAudience& mAudience;
  const std::shared_ptr<const void> mPlace;
  boost::beast::flat_buffer mBuffer;
  boost::beast::http::request_parser<boost::beast::http::empty_body> mParser;
  Response mResponse;
  std::array<char, 1024> mUnwanted{};
};
