#include "tools/feedbackctl/socketprobe.h"

#include <fmt/format.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <array>
#include <cerrno>
#include <string_view>
#include <system_error>

#include "platform/os/descriptor.h"

using namespace std::string_view_literals;

namespace {

// The connection preface and an empty SETTINGS frame (RFC 9113, sections 3.4 and 6.5).
constexpr auto kGreeting = "PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n\0\0\0\4\0\0\0\0\0"sv;
constexpr int kPatienceMilliseconds = 1000;

std::string Failure(const std::string& path) {
  switch (errno) {
    case ENOENT:
      return "no socket " + path;
    case ECONNREFUSED:
      return "nobody listens on " + path;
    case ENAMETOOLONG:
      return path + " is too long for a socket's path";
    case EAGAIN:
      return fmt::format("{} {}", path, kHangs);
    case EPIPE:
    case ECONNRESET:
      return fmt::format("{} closes the connection: {}", path, kRefusesUser);
    default:
      return fmt::format("{}: {}", path, std::generic_category().message(errno));
  }
}

// Of an empty descriptor errno says why.
CDescriptor Connect(const std::string& socketPath) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (socketPath.size() >= sizeof address.sun_path) {
    errno = ENAMETOOLONG;
    return CDescriptor();
  }
  socketPath.copy(address.sun_path, socketPath.size());
  CDescriptor connection(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): the socket interface wants it
  if (connect(connection.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    const int reason = errno;
    connection.Reset();
    errno = reason;
  }
  return connection;
}

}  // namespace

std::string WhyNoAnswer(const std::string& socketPath) {
  const CDescriptor connection = Connect(socketPath);
  if (connection.Get() < 0 ||
      send(connection.Get(), kGreeting.data(), kGreeting.size(), MSG_NOSIGNAL) < 0) {
    return Failure(socketPath);
  }
  pollfd answer{.fd = connection.Get(), .events = POLLIN, .revents = 0};
  poll(&answer, 1, kPatienceMilliseconds);
  std::array<char, 9> frame{};
  const ssize_t size = recv(connection.Get(), frame.data(), frame.size(), 0);
  if (size == 0) {
    errno = ECONNRESET;
  }
  return size > 0 ? "" : Failure(socketPath);
}

std::optional<Rpc::Peer> ServedBy(const std::string& socketPath) {
  const CDescriptor connection = Connect(socketPath);
  Rpc::Peer peer;
  if (connection.Get() < 0 || !Rpc::IdentifyPeer(connection.Get(), peer)) {
    return std::nullopt;
  }
  return peer;
}
