#include "virtualcharger/scenario/peerlink.h"

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
  for (const auto& [number, command] : mCommands) command->lost = true;
  close(mDescriptor);
}

pollfd CPeerLink::Input() const {
  return {mDescriptor, static_cast<short>(mUnsent.empty() ? POLLIN : POLLIN | POLLOUT), 0};
}

void CPeerLink::Look() {
  HandOn();
  pollfd input{mDescriptor, POLLIN, 0};
  while (poll(&input, 1, 0) > 0 && mLines.ReadFrom(mDescriptor)) {
  }
  while (const auto line = mLines.Next()) Understand(*line);
}

std::shared_ptr<const SCommand> CPeerLink::Send(const std::string& command) {
  mUnsent += std::to_string(++mLastNumber) + ' ' + command + '\n';
  HandOn();
  return mCommands[mLastNumber] = std::make_shared<SCommand>();
}

// A peer that is gone is noticed as a process that has ended.
void CPeerLink::HandOn() {
  while (!mUnsent.empty()) {
    const auto sent =
        send(mDescriptor, mUnsent.data(), mUnsent.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent <= 0) return;
    mUnsent.erase(0, static_cast<std::size_t>(sent));
  }
}

void CPeerLink::Understand(const std::string& line) {
  std::istringstream stream(line);
  std::string kind;
  std::int64_t number = 0;
  stream >> kind;
  if (kind == "serving") {
    mServing = true;
    return;
  }
  if (!(stream >> number)) return;
  std::string text;
  std::getline(stream.ignore(), text);
  if (kind == "subscribers") {
    mSubscribers = static_cast<std::size_t>(number);
  } else if (kind == "reply") {
    if (const auto command = mCommands.extract(number)) command.mapped()->outcome = text;
  } else {
    mOnEvent(kind, number, text);
  }
}
