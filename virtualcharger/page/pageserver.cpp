#include "virtualcharger/page/pageserver.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <fmt/format.h>

#include <stdexcept>
#include <utility>

#include "platform/log/log.h"
#include "platform/worker/worker.h"
#include "virtualcharger/page/pageaudience.h"
#include "virtualcharger/page/pageconnection.h"
#include "virtualcharger/page/requestcheck.h"

namespace {

namespace asio = boost::asio;
using asio::ip::tcp;
using boost::system::error_code;

constexpr std::uint16_t kPortsTried = 100;
constexpr long kMostConnections = 64;  // that have not become a WebSocket
constexpr std::chrono::milliseconds kAfterFailure{100};

error_code Listen(tcp::acceptor& acceptor, std::uint16_t port) {
  const tcp::endpoint endpoint(asio::ip::address_v4::loopback(), port);
  error_code error;
  acceptor.open(endpoint.protocol(), error);
  // A port whose last connections are still fading out is free.
  if (!error) acceptor.set_option(asio::socket_base::reuse_address(true), error);
  if (!error) acceptor.bind(endpoint, error);
  if (!error) acceptor.listen(asio::socket_base::max_listen_connections, error);
  error_code ignored;
  if (error) acceptor.close(ignored);
  return error;
}

void ListenOn(tcp::acceptor& acceptor, std::uint16_t port) {
  const auto error = Listen(acceptor, port);
  if (!error) return;
  throw std::runtime_error(fmt::format(
      "cannot serve the page on 127.0.0.1 port {}: {}; choose another one with --port, or leave "
      "--port out to get one that is free",
      port, error.message()));
}

void ListenOnAFreeOne(tcp::acceptor& acceptor) {
  constexpr auto kLast = CPageServer::kUsualPort + kPortsTried - 1;
  error_code error;
  for (int port = CPageServer::kUsualPort; port <= kLast; ++port) {
    error = Listen(acceptor, static_cast<std::uint16_t>(port));
    if (!error) return;
  }
  throw std::runtime_error(
      fmt::format("cannot serve the page on any 127.0.0.1 port from {} to {}: {}; choose one with "
                  "--port",
                  CPageServer::kUsualPort, kLast, error.message()));
}

}  // namespace

class CPageServer::CCore {
 public:
  CCore(const SSettings& settings, IPageHandler& handler) : mAudience(settings.begin, handler) {
    if (settings.port) {
      ListenOn(mAcceptor, *settings.port);
    } else {
      ListenOnAFreeOne(mAcceptor);
    }
    mPort = mAcceptor.local_endpoint().port();
    Accept();
    mThread.NonBlockingCall([this] { Run(); });
    mThread.Start();
  }

  CCore(const CCore&) = delete;
  CCore& operator=(const CCore&) = delete;

  ~CCore() {
    mContext.stop();
    mThread.Stop();
  }

  std::uint16_t Port() const { return mPort; }
  const CPageAudience& Audience() const { return mAudience; }

  template <typename TTask>
  void Post(TTask task) {
    asio::post(mContext, [this, task = std::move(task)] { task(mAudience); });
  }

 private:
  // What the handler throws costs only the message that it was about.
  void Run() {
    while (!mContext.stopped()) {
      try {
        mContext.run();
      } catch (const std::exception& exception) {
        LOG(Error, "The page's server: {}", exception.what());
      }
    }
  }

  void Accept() {
    mAcceptor.async_accept([this](error_code error, tcp::socket socket) {
      if (error) return AcceptLater();
      Accept();
      if (mPlaces.use_count() <= kMostConnections) {
        std::make_shared<CPageConnection>(std::move(socket), mPort, mAudience, mPlaces)->Serve();
      }
    });
  }

  // Descriptors may have run out.
  void AcceptLater() {
    mPause.expires_after(kAfterFailure);
    mPause.async_wait([this](error_code) { Accept(); });
  }

  // The context goes after everything that lives on it.
  asio::io_context mContext{1};
  tcp::acceptor mAcceptor{mContext};
  asio::steady_timer mPause{mContext};
  std::uint16_t mPort = 0;
  CPageAudience mAudience;
  const std::shared_ptr<const int> mPlaces = std::make_shared<const int>();
  CWorker mThread{"page"};
};

CPageServer::CPageServer(const SSettings& settings, IPageHandler& handler)
    : mCore(std::make_unique<CCore>(settings, handler)) {}

CPageServer::~CPageServer() = default;

std::uint16_t CPageServer::Port() const {
  return mCore->Port();
}

std::string CPageServer::Address() const {
  return PageAddress("http://127.0.0.1", Port()) + '/';
}

std::string CPageServer::Url() const {
  return Address() + '#' + mCore->Audience().Token();
}

std::size_t CPageServer::Clients() const {
  return mCore->Audience().Size();
}

void CPageServer::Greet(ClientId client, std::string text) {
  mCore->Post([client, shared = std::make_shared<const std::string>(std::move(text))](
                  CPageAudience& audience) { audience.Greet(client, shared); });
}

void CPageServer::Send(ClientId client, std::string text) {
  mCore->Post([client, shared = std::make_shared<const std::string>(std::move(text))](
                  CPageAudience& audience) { audience.Send(client, shared); });
}

void CPageServer::Publish(std::string text, EWaiting waiting) {
  mCore->Post([waiting, shared = std::make_shared<const std::string>(std::move(text))](
                  CPageAudience& audience) { audience.Publish(shared, waiting); });
}

void CPageServer::PublishToWriters(std::string text) {
  mCore->Post([shared = std::make_shared<const std::string>(std::move(text))](
                  CPageAudience& audience) { audience.PublishToWriters(shared); });
}
