#include "virtualcharger/page/pageclient.h"

#include <boost/asio/buffer.hpp>
#include <boost/beast/core/buffers_to_string.hpp>
#include <boost/beast/websocket/rfc6455.hpp>

#include <algorithm>
#include <utility>

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace websocket = beast::websocket;

CPageClient::CPageClient(beast::tcp_stream stream, SEvents events)
    : mStream(std::move(stream)), mEvents(std::move(events)) {}

void CPageClient::Accept(const Request& upgrade) {
  beast::get_lowest_layer(mStream).expires_never();  // the WebSocket keeps time itself
  mStream.set_option(websocket::stream_base::timeout{CPageServer::kHandshakeLimit,
                                                     CPageServer::kSilenceLimit, true});
  mStream.read_message_max(CPageServer::kLargestMessage);
  mStream.auto_fragment(false);
  mStream.text(true);
  mStream.async_accept(upgrade, [self = shared_from_this()](beast::error_code error) {
    if (error) return self->Leave();
    self->Read();
  });
}

void CPageClient::Send(const Text& text, EWaiting waiting) {
  if (mState != EState::Open) return;
  if (waiting == EWaiting::Replace) DropReplaced();
  // One that is too large on its own must get through all the same.
  if (!mQueue.empty() && mQueued + text->size() > CPageServer::kLargestQueue) return Cut();
  mQueue.push_back({text, waiting});
  mQueued += text->size();
  if (mQueue.size() == 1) Write();
}

void CPageClient::Close(const char* reason) {
  if (mState != EState::Open) return;
  mState = EState::Closing;
  mStream.async_close({websocket::close_code::policy_error, reason},
                      [self = shared_from_this()](beast::error_code) { self->Leave(); });
}

void CPageClient::Read() {
  mStream.async_read(mBuffer, [self = shared_from_this()](beast::error_code error, std::size_t) {
    if (error) return self->Leave();
    const auto text = beast::buffers_to_string(self->mBuffer.data());
    self->mBuffer.clear();
    if (self->mStream.got_text()) {
      self->mEvents.message(text);
    } else {
      self->Close("a message is text");
    }
    // The close reads on its own.
    if (self->mState != EState::Closing) self->Read();
  });
}

void CPageClient::Write() {
  mStream.async_write(asio::buffer(*mQueue.front().text),
                      [self = shared_from_this()](beast::error_code error, std::size_t) {
                        if (error) return self->Leave();
                        self->mQueued -= self->mQueue.front().text->size();
                        self->mQueue.pop_front();
                        if (self->mState == EState::Open && !self->mQueue.empty()) self->Write();
                      });
}

void CPageClient::DropReplaced() {
  if (mQueue.empty()) return;
  const auto isReplaced = [](const SWaiting& each) { return each.waiting == EWaiting::Replace; };
  const auto found = std::find_if(mQueue.begin() + 1, mQueue.end(), isReplaced);
  if (found == mQueue.end()) return;
  mQueued -= found->text->size();
  mQueue.erase(found);
}

void CPageClient::Cut() {
  mState = EState::Cut;
  beast::error_code ignored;
  beast::get_lowest_layer(mStream).socket().set_option(asio::socket_base::linger(true, 0), ignored);
  beast::get_lowest_layer(mStream).close();
}

void CPageClient::Leave() {
  if (mState == EState::Left) return;
  Cut();
  mState = EState::Left;
  mEvents.end();
}
