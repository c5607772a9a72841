#include "platform/rpc/acceptor.h"

#include <fcntl.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>
#include <system_error>

#include "platform/rpc/communicationexception.h"
#include "platform/rpc/log.h"
#include "platform/rpc/peercheck.h"

namespace Rpc {
namespace {

using namespace std::chrono_literals;

constexpr std::string_view kPreface = "PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n";

constexpr size_t kMostSilent = 16;
constexpr auto kSilenceLimit = 10s;
constexpr auto kRetryAfterExhaustion = 100ms;
constexpr auto kBetweenRefusalLines = 1s;  // peers must not fill the log

// Descriptors that connections never take: the lamp, the buzzer, the sensor, the log and the
// process's own clients need theirs also when everyone connects.
constexpr rlim_t kReservedDescriptors = 40;

size_t ConnectionLimit(size_t configured) {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) {
    return configured;
  }
  const rlim_t free = limit.rlim_cur > kReservedDescriptors + kMostSilent
                          ? limit.rlim_cur - kReservedDescriptors - kMostSilent
                          : 1;
  return std::min(configured, static_cast<size_t>(free));
}

}  // namespace

CAcceptor::CAcceptor(const CommunicationConfig& config, Handover handover)
    : mConfig(config),
      mLimit(ConnectionLimit(config.maxConnections)),
      mHandover(std::move(handover)),
      mEpoll(epoll_create1(EPOLL_CLOEXEC)),
      mWakeUp(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (!mEpoll || !mWakeUp || !Watch(mWakeUp.Get(), EPOLLIN)) {
    throw CommunicationException("Cannot watch sockets: " + std::generic_category().message(errno));
  }
}

CAcceptor::~CAcceptor() = default;

void CAcceptor::Reserve(const std::string& name) {
  if (std::none_of(mSockets.begin(), mSockets.end(),
                   [&](const auto& socket) { return socket->Name() == name; })) {
    mSockets.push_back(std::make_unique<CServiceSocket>(mConfig.socketDirectory, name));
  }
}

void CAcceptor::Listen() {
  for (const auto& socket : mSockets) {
    socket->Listen();
  }
  WatchDirectory();
}

// A socket file that somebody removes would otherwise be missed by new clients only.
void CAcceptor::WatchDirectory() {
  mDirectoryWatch = CDescriptor(inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
  if (!mDirectoryWatch ||
      inotify_add_watch(mDirectoryWatch.Get(), mConfig.socketDirectory.c_str(),
                        IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_ONLYDIR) < 0 ||
      !Watch(mDirectoryWatch.Get(), EPOLLIN)) {
    Write(&ILogger::Warning, "Cannot watch {}: {}; a socket that is removed there stays away",
          mConfig.socketDirectory, std::generic_category().message(errno));
  }
}

void CAcceptor::RestoreSockets() {
  std::array<char, 4096> events{};
  while (read(mDirectoryWatch.Get(), events.data(), events.size()) > 0) {
  }
  for (const auto& socket : mSockets) {
    if (socket->IsInPlace()) {
      continue;
    }
    try {
      socket->Listen();
      if (mListening) {
        Watch(socket->Descriptor(), EPOLLIN);
      }
      Write(&ILogger::Warning, "The socket of \"{}\" was removed; it is back", socket->Name());
    } catch (const CommunicationException& exception) {
      Write(&ILogger::Error, "The socket was removed and cannot be restored. {}", exception.what());
    }
  }
}

bool CAcceptor::Watch(int descriptor, unsigned events) {
  epoll_event event{};
  event.events = events;
  event.data.fd = descriptor;
  return epoll_ctl(mEpoll.Get(), EPOLL_CTL_ADD, descriptor, &event) == 0;
}

void CAcceptor::SetListening(bool listen) {
  if (listen == mListening) {
    return;
  }
  mListening = listen;
  for (const auto& socket : mSockets) {
    if (listen) {
      Watch(socket->Descriptor(), EPOLLIN);
    } else {
      epoll_ctl(mEpoll.Get(), EPOLL_CTL_DEL, socket->Descriptor(), nullptr);
    }
  }
}

void CAcceptor::Run() {
  SetListening(true);
  std::array<epoll_event, 16> events{};
  for (;;) {
    const int count = epoll_wait(mEpoll.Get(), events.data(), static_cast<int>(events.size()),
                                 MillisecondsToNextDeadline());
    for (int i = 0; i < count; ++i) {
      const int descriptor = events[static_cast<size_t>(i)].data.fd;
      if (descriptor == mWakeUp.Get()) {
        mSilent.clear();
        mSockets.clear();
        return;
      }
      if (descriptor == mDirectoryWatch.Get()) {
        RestoreSockets();
        continue;
      }
      const auto socket = std::find_if(mSockets.begin(), mSockets.end(), [&](const auto& each) {
        return each->Descriptor() == descriptor;
      });
      if (socket != mSockets.end()) {
        Accept(**socket);
      } else {
        Greet(descriptor);
      }
    }
    DropExpired();
    if (!mListening && Clock::now() >= mRetryAt) {
      SetListening(true);
    }
  }
}

void CAcceptor::Stop() {
  const uint64_t one = 1;
  // Cannot fail: the counter would have to be at its 64-bit limit.
  [[maybe_unused]] const ssize_t written = write(mWakeUp.Get(), &one, sizeof(one));
}

int CAcceptor::MillisecondsToNextDeadline() const {
  auto next = Clock::time_point::max();
  if (!mSilent.empty()) {
    next = mSilent.front().since + kSilenceLimit;
  }
  if (!mListening) {
    next = std::min(next, mRetryAt);
  }
  if (next == Clock::time_point::max()) {
    return -1;
  }
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(next - Clock::now()).count();
  return static_cast<int>(std::max<decltype(left)>(left, 0));
}

void CAcceptor::Accept(const CServiceSocket& socket) {
  CDescriptor connection(
      accept4(socket.Descriptor(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
  if (!connection) {
    if (errno == EMFILE || errno == ENFILE || errno == ENOBUFS || errno == ENOMEM) {
      const int error = errno;
      if (MayLogRefusal(mRefusalLoggedAt)) {
        Write(&ILogger::Warning, "Cannot accept a connection to \"{}\": {}; trying again shortly",
              socket.Name(), std::generic_category().message(error));
      }
      SetListening(false);
      mRetryAt = Clock::now() + kRetryAfterExhaustion;
    }
    return;
  }

  Peer peer;
  if (!IdentifyPeer(connection.Get(), peer) ||
      !IsAllowed(peer, mConfig.allowedUsers, socket.Group())) {
    if (MayLogRefusal(mStrangerLoggedAt)) {
      Write(
          &ILogger::Warning,
          "Refused process {} of user {} at \"{}\": only root, user {}, group {} and the users in "
          "\"AllowedUsers\" may connect",
          peer.pid, peer.user, socket.Name(), geteuid(), socket.Group());
    }
    return;
  }

  if (mSilent.size() == kMostSilent) {
    mSilent.pop_front();
  }
  if (Watch(connection.Get(), EPOLLIN | EPOLLRDHUP)) {
    mSilent.push_back({std::move(connection), socket.Name(), Clock::now()});
  }
}

void CAcceptor::Greet(int descriptor) {
  const auto silent = std::find_if(mSilent.begin(), mSilent.end(), [&](const Silent& each) {
    return each.connection.Get() == descriptor;
  });
  if (silent == mSilent.end()) {
    return;  // gave way to a newer one in the same round
  }
  std::array<char, kPreface.size()> bytes{};
  const ssize_t size = recv(descriptor, bytes.data(), bytes.size(), MSG_PEEK | MSG_DONTWAIT);
  if (size < 0 && (errno == EAGAIN || errno == EINTR)) {
    return;  // the event was for the descriptor's previous owner
  }
  Silent greeted = std::move(*silent);
  mSilent.erase(silent);
  epoll_ctl(mEpoll.Get(), EPOLL_CTL_DEL, descriptor, nullptr);
  if (size <= 0) {
    return;
  }
  // A client sends the preface as one write, which a Unix socket delivers whole.
  if (std::string_view(bytes.data(), static_cast<size_t>(size)) != kPreface) {
    if (MayLogRefusal(mRefusalLoggedAt)) {
      Write(&ILogger::Warning, "Closed a connection to \"{}\" that does not speak HTTP/2",
            greeted.service);
    }
    return;
  }
  {
    const std::lock_guard lock(mServedMutex);
    if (!HasRoom()) {
      if (MayLogRefusal(mRefusalLoggedAt)) {
        Write(&ILogger::Warning, "Refused a connection to \"{}\": {} are open already",
              greeted.service, mServed.size());
      }
      return;
    }
    struct stat file {};
    fstat(descriptor, &file);
    mServed.push_back({descriptor, file.st_ino});
  }
  mHandover(std::move(greeted.connection));
}

bool CAcceptor::HasRoom() {
  if (mServed.size() < mLimit) {
    return true;
  }
  std::erase_if(mServed, [](const Served& served) {
    struct stat file {};
    return fstat(served.descriptor, &file) != 0 || file.st_ino != served.inode;
  });
  return mServed.size() < mLimit;
}

bool CAcceptor::MayLogRefusal(Clock::time_point& last) {
  if (Clock::now() - last < kBetweenRefusalLines) {
    return false;
  }
  last = Clock::now();
  return true;
}

void CAcceptor::Disconnect() {
  const std::lock_guard lock(mServedMutex);
  for (const Served& served : mServed) {
    // The server may close its descriptor at any moment: look at a duplicate, which stays.
    const CDescriptor connection(fcntl(served.descriptor, F_DUPFD_CLOEXEC, 0));
    struct stat file {};
    if (connection && fstat(connection.Get(), &file) == 0 && file.st_ino == served.inode) {
      shutdown(connection.Get(), SHUT_RDWR);
    }
  }
}

void CAcceptor::DropExpired() {
  const auto limit = Clock::now() - kSilenceLimit;
  while (!mSilent.empty() && mSilent.front().since <= limit) {
    mSilent.pop_front();
  }
}

}  // namespace Rpc
