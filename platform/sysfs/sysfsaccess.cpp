#include "platform/sysfs/sysfsaccess.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>
#include <thread>

#include "platform/log/log.h"

namespace {

using namespace std::chrono_literals;

constexpr size_t kPageSize = 4096;
constexpr std::chrono::milliseconds kAccessPollPeriod = 10ms;

std::string ErrnoText(int error) {
  return std::generic_category().message(error);
}

// Repeats a system call that a signal interrupted.
template <typename SystemCall>
auto Retry(SystemCall systemCall) {
  auto result = systemCall();
  while (result < 0 && errno == EINTR) {
    result = systemCall();
  }
  return result;
}

bool Failed(const char* operation, const std::string& attribute) {
  LOG(Debug, "Cannot {} {}: {}", operation, attribute, ErrnoText(errno));
  return false;
}

int Open(const std::string& attribute, int flags) {
  return Retry([&] { return open(attribute.c_str(), flags | O_CLOEXEC); });
}

// An interrupted close has closed the descriptor all the same; repeating it could hit a new one.
bool Close(int descriptor) {
  return close(descriptor) == 0 || errno == EINTR;
}

}  // namespace

bool CSysfsAccess::Write(const std::string& attribute, std::string_view text) {
  const int descriptor = Open(attribute, O_WRONLY | O_TRUNC);
  if (descriptor < 0) {
    return Failed("open for writing", attribute);
  }
  const ssize_t written = Retry([&] { return write(descriptor, text.data(), text.size()); });
  if (written < 0) {
    Failed("write", attribute);
    Close(descriptor);
    return false;
  }
  // Some drivers only report at the close that they did not take the value.
  if (!Close(descriptor)) {
    return Failed("close after writing", attribute);
  }
  if (static_cast<size_t>(written) != text.size()) {
    LOG(Debug, "Cannot write {}: only {} of {} bytes were taken", attribute, written, text.size());
    return false;
  }
  return true;
}

bool CSysfsAccess::Read(const std::string& attribute, std::string& text) {
  const int descriptor = Open(attribute, O_RDONLY);
  if (descriptor < 0) {
    return Failed("open for reading", attribute);
  }
  // The kernel hands out a whole value in one read. A second read, only to see the end, would make
  // a slow sensor's driver work for nothing.
  std::array<char, kPageSize> page;
  const ssize_t size = Retry([&] { return read(descriptor, page.data(), page.size()); });
  if (size < 0) {
    Failed("read", attribute);
    Close(descriptor);
    return false;
  }
  if (!Close(descriptor)) {
    return Failed("close after reading", attribute);
  }
  std::string_view value(page.data(), static_cast<size_t>(size));
  if (value.ends_with('\n')) {
    value.remove_suffix(1);
  }
  text = value;
  return true;
}

bool CSysfsAccess::WaitForAccess(const std::string& attribute, std::chrono::milliseconds limit) {
  const auto end = std::chrono::steady_clock::now() + limit;
  while (true) {
    const auto now = std::chrono::steady_clock::now();
    if (access(attribute.c_str(), R_OK | W_OK) == 0) {
      return true;
    }
    if (now >= end) {
      return Failed("get access in time to", attribute);
    }
    std::this_thread::sleep_until(std::min(now + kAccessPollPeriod, end));
  }
}
