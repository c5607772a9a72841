#include "virtualcharger/desk/filenotice.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <system_error>

namespace {

int Checked(int result, const std::string& what) {
  if (result < 0) throw std::system_error(errno, std::generic_category(), what);
  return result;
}

}  // namespace

CFileNotice::CFileNotice()
    : mInotify(Checked(inotify_init1(IN_CLOEXEC | IN_NONBLOCK), "no inotify")) {}

int CFileNotice::Add(const std::string& path) {
  // IN_CREATE for what is complete as it appears: folders, links, sockets.
  constexpr auto changes = IN_MODIFY | IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE |
                           IN_CREATE | IN_ATTRIB | IN_MOVE_SELF | IN_DELETE_SELF;
  return Checked(inotify_add_watch(mInotify.Get(), path.c_str(), changes), path);
}

std::set<int> CFileNotice::Take() {
  std::set<int> changed;
  alignas(inotify_event) std::array<char, 4096> buffer;
  ssize_t size = 0;
  while ((size = read(mInotify.Get(), buffer.data(), buffer.size())) > 0) {
    for (ssize_t at = 0; at < size;) {
      inotify_event event{};
      std::memcpy(&event, buffer.data() + at, sizeof event);
      changed.insert(event.wd);
      at += static_cast<ssize_t>(sizeof event + event.len);
    }
  }
  return changed;
}
