#include "virtualcharger/page/pageconnection.h"

#include <boost/asio/buffer.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/http/write.hpp>
#include <boost/beast/websocket/rfc6455.hpp>

#include <utility>
#include <vector>

#include "virtualcharger/page/requestcheck.h"

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;

namespace {

std::string_view View(beast::string_view text) {
  return {text.data(), text.size()};
}

std::vector<std::string_view> Values(const CPageClient::Request& request, http::field field) {
  std::vector<std::string_view> values;
  const auto [begin, end] = request.equal_range(field);
  for (auto each = begin; each != end; ++each) values.push_back(View(each->value()));
  return values;
}

SPageRequest Describe(const CPageClient::Request& request) {
  return {View(request.method_string()), View(request.target()), Values(request, http::field::host),
          Values(request, http::field::origin), beast::websocket::is_upgrade(request)};
}

}  // namespace

CPageConnection::CPageConnection(asio::ip::tcp::socket socket, std::uint16_t port,
                                 CPageAudience& audience, std::shared_ptr<const void> place)
    : mStream(std::move(socket)), mPort(port), mAudience(audience), mPlace(std::move(place)) {
  mParser.header_limit(CPageServer::kLargestRequest);
}

void CPageConnection::Serve() {
  mStream.expires_after(CPageServer::kHandshakeLimit);
  http::async_read_header(
      mStream, mBuffer, mParser,
      [self = shared_from_this()](beast::error_code error, std::size_t) { self->Answer(error); });
}

void CPageConnection::Answer(beast::error_code error) {
  if (!error) return AnswerRequest();
  if (error == http::error::header_limit) {
    const auto limit = std::to_string(CPageServer::kLargestRequest);
    return Respond(431, "text/plain", "A request has at most " + limit + " bytes.");
  }
  const bool isMalformed = error.category() == http::make_error_code(http::error{}).category() &&
                           error != http::error::end_of_stream;
  if (isMalformed) Respond(400, "text/plain", "This is no HTTP request.");
}

void CPageConnection::AnswerRequest() {
  const auto& request = mParser.get();
  const auto verdict = CheckRequest(Describe(request), mPort);
  // A browser shows the answer for the page, but not the one for its WebSocket.
  const bool isPage = verdict.status == 200 && request.target() == "/";
  if ((isPage || verdict.status == 101) && mAudience.IsFull()) {
    const auto limit = std::to_string(CPageServer::kMostClients);
    return Respond(503, "text/plain",
                   "This charger is shown " + limit + " times already, as a page or as a tile on " +
                       "another charger's page; close one of them.\n");
  }
  if (verdict.status == 101) return mAudience.Admit(std::move(mStream), request);
  if (verdict.status == 200) return RespondWithFile(View(request.target()));
  Respond(verdict.status, "text/plain", verdict.text + "\n");
}

void CPageConnection::RespondWithFile(std::string_view target) {
  const auto* file = FindPageFile(target);
  Respond(200, ContentType(*file), std::string(file->content), file);
}

void CPageConnection::Respond(unsigned status, std::string_view type, std::string body,
                              const SPageFile* file) {
  mResponse.result(status);
  mResponse.keep_alive(false);
  const auto set = [this](beast::string_view field, std::string_view value) {
    mResponse.set(field, beast::string_view(value.data(), value.size()));
  };
  set("Content-Type", type);
  set("Content-Security-Policy", ContentPolicy(file));
  set("X-Content-Type-Options", "nosniff");
  set("Referrer-Policy", "no-referrer");
  set("Cache-Control", "no-store");
  if (status == 405) set("Allow", "GET");
  mResponse.body() = std::move(body);
  mResponse.prepare_payload();
  mStream.expires_after(CPageServer::kHandshakeLimit);
  http::async_write(mStream, mResponse,
                    [self = shared_from_this()](beast::error_code error, std::size_t) {
                      if (error) return;
                      self->mStream.socket().shutdown(asio::socket_base::shutdown_send, error);
                      self->Drain();
                    });
}

void CPageConnection::Drain() {
  mStream.async_read_some(asio::buffer(mUnwanted),
                          [self = shared_from_this()](beast::error_code error, std::size_t) {
                            if (!error) self->Drain();
                          });
}
