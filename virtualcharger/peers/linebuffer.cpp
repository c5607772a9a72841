#include "virtualcharger/peers/linebuffer.h"

#include <unistd.h>

#include <array>
#include <cerrno>

bool CLineBuffer::ReadFrom(int descriptor) {
  std::array<char, 4096> part{};
  const ssize_t size = read(descriptor, part.data(), part.size());
  if (size > 0) mText.append(part.data(), static_cast<std::size_t>(size));
  return size > 0 || (size < 0 && (errno == EAGAIN || errno == EINTR));
}

std::optional<std::string> CLineBuffer::Next() {
  const auto end = mText.find('\n');
  if (end == std::string::npos) return std::nullopt;
  auto line = mText.substr(0, end);
  mText.erase(0, end + 1);
  return line;
}
