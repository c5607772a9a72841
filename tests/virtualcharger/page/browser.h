// The other side of the page's server: what a browser, and what a stranger would send.
#pragma once

#include <boost/asio/connect.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/read.hpp>
#include <boost/asio/read_until.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/buffers_to_string.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/websocket/stream.hpp>

#include <cstdint>
#include <string>

// A connection that can say anything. Every operation waits for its end.
class CRawConnection {
 public:
  using error_code = boost::system::error_code;
  using tcp = boost::asio::ip::tcp;

  explicit CRawConnection(std::uint16_t port) : mSocket(mContext) {
    mSocket.connect({boost::asio::ip::address_v4::loopback(), port});
  }

  void Say(const std::string& bytes) {
    error_code ignored;  // the server may have hung up already
    boost::asio::write(mSocket, boost::asio::buffer(bytes), ignored);
  }

  // All that comes until the server hangs up.
  std::string Hear() {
    std::string heard;
    error_code end;
    boost::asio::read(mSocket, boost::asio::dynamic_buffer(heard), end);
    return heard;
  }

  std::string HearLine() {
    std::string heard;
    error_code end;
    const auto size =
        boost::asio::read_until(mSocket, boost::asio::dynamic_buffer(heard), "\r\n", end);
    return heard.substr(0, size);
  }

  tcp::socket& Socket() { return mSocket; }

 private:
  boost::asio::io_context mContext;
  tcp::socket mSocket;
};

// A page's WebSocket. Throws what the connection throws.
class CBrowser {
 public:
  explicit CBrowser(std::uint16_t port) : mConnection(port), mStream(mConnection.Socket()) {
    const auto host = "127.0.0.1:" + std::to_string(port);
    mStream.set_option(boost::beast::websocket::stream_base::decorator(
        [&](boost::beast::websocket::request_type& request) {
          request.set("Origin", "http://" + host);
        }));
    mStream.handshake(host, "/ws");
  }

  void Say(const std::string& text) { mStream.write(boost::asio::buffer(text)); }
  void SayHello(const std::string& token = "") {
    Say(R"({"type":"hello","token":")" + token + "\"}");
  }

  std::string Hear() {
    boost::beast::flat_buffer buffer;
    mStream.read(buffer);
    return boost::beast::buffers_to_string(buffer.data());
  }

  // Reads until the server closes; the code that it gave as its reason.
  unsigned HearClose() {
    boost::beast::flat_buffer buffer;
    CRawConnection::error_code error;
    while (!error) mStream.read(buffer, error);
    return mStream.reason().code;
  }

  auto& Stream() { return mStream; }

 private:
  CRawConnection mConnection;
  boost::beast::websocket::stream<CRawConnection::tcp::socket&> mStream;
};
