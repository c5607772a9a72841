#include "virtualcharger/scenario/peerlink.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <sstream>
#include <system_error>

CPeerLink::CPeerLink(const std::vector<std::string>& command, int log, EventHandler onEvent)
    : mOnEvent(std::move(onEvent)) {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
    throw std::system_error(errno, std::generic_category(), "no socket to a peer");
  }
  mDescriptor = ends[0];
  try {
    mProcess.emplace(command, CChildProcess::SStandard{ends[1], ends[1], log});
  } catch (...) {
    close(ends[0]);
    close(ends[1]);
    throw;
  }
  close(ends[1]);
}

CPeerLink::~CPeerLink() {
  close(mDescriptor);
}

void CPeerLink::Read() {
  pollfd input{mDescriptor, POLLIN, 0};
  while (poll(&input, 1, 0) > 0 && mLines.ReadFrom(mDescriptor)) {
  }
  while (const auto line = mLines.Next()) Understand(*line);
}

std::uint64_t CPeerLink::Send(const std::string& command) {
  const auto line = std::to_string(++mLastNumber) + ' ' + command + '\n';
  // A peer that is gone is noticed as a process that has ended.
  [[maybe_unused]] const auto sent =
      send(mDescriptor, line.data(), line.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
  return mLastNumber;
}

std::optional<std::string> CPeerLink::Outcome(std::uint64_t number) const {
  return mOutcome && mOutcome->first == number ? std::optional(mOutcome->second) : std::nullopt;
}

void CPeerLink::Understand(const std::string& line) {
  std::istringstream stream(line);
  std::string kind;
  std::uint64_t number = 0;
  stream >> kind;
  if (kind == "serving") {
    mServing = true;
    return;
  }
  if (!(stream >> number)) return;
  std::string text;
  std::getline(stream.ignore(), text);
  if (kind == "subscribers") {
    mSubscribers = number;
  } else if (kind == "reply") {
    mOutcome = {number, text};
  } else {
    mOnEvent(kind, static_cast<int>(number), text);
  }
}
