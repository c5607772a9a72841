#include "platform/kvconfig/filewatch.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <list>
#include <system_error>
#include <utility>

#include "platform/log/log.h"

namespace KvConfig {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

// IN_CREATE for links, which are complete as they appear; IN_ATTRIB for permissions.
constexpr uint32_t kEvents =
    IN_CLOSE_WRITE | IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_ATTRIB | IN_ONLYDIR;
constexpr int kLinkLimit = 40;  // as the kernel's

int PollTime(std::chrono::milliseconds rest) {
  return static_cast<int>(std::max(rest, 0ms).count());
}

}  // namespace

CFileWatch::CFileWatch(const fs::path& path)
    : mPath(fs::absolute(path)),
      mInotify(inotify_init1(IN_CLOEXEC | IN_NONBLOCK)),
      mStop(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (!mStop) {
    throw std::system_error(errno, std::generic_category(), "Cannot watch " + mPath.string());
  }
  Arm();
}

// Each directory is watched before it is looked into, from the root downwards: what changes behind
// this walk is an event of a directory that is watched already.
void CFileWatch::Arm() {
  std::map<int, std::set<std::string>> names;
  std::string failure;
  std::list<fs::path> rest(mPath.begin(), mPath.end());
  fs::path directory;
  int links = 0;
  while (!rest.empty()) {
    const fs::path name = rest.front();
    rest.pop_front();
    if (name.is_absolute()) {
      directory = name;
    } else if (name == "..") {
      directory = directory.parent_path();
    } else if (!name.empty() && name != ".") {
      const int watch = inotify_add_watch(mInotify.Get(), directory.c_str(), kEvents);
      if (watch >= 0) {
        names[watch].insert(name);
      } else if (errno != ENOENT && errno != ENOTDIR) {
        failure = directory.string() + ": " + std::generic_category().message(errno);
      }
      std::error_code ignored;
      const auto type = fs::symlink_status(directory / name, ignored).type();
      if (type == fs::file_type::symlink && ++links <= kLinkLimit) {
        const fs::path target = fs::read_symlink(directory / name, ignored);
        rest.insert(rest.begin(), target.begin(), target.end());
      } else if (type == fs::file_type::directory) {
        directory /= name;
      } else {
        break;
      }
    }
  }
  for (const auto& [watch, unused] : std::exchange(mNames, names)) {
    if (!names.contains(watch)) {
      inotify_rm_watch(mInotify.Get(), watch);
    }
  }
  Log(failure);
}

void CFileWatch::Log(const std::string& failure) {
  if (failure != std::exchange(mLogged, failure) && !failure.empty()) {
    LOG(Error, "Changes of {} may go unnoticed: cannot watch {}", mPath.string(), failure);
  }
}

CFileWatch::EResult CFileWatch::Wait(std::optional<std::chrono::milliseconds> limit) {
  const auto end = std::chrono::steady_clock::now() + limit.value_or(0ms);
  for (;;) {
    // Rounded up: a wait that ends before its time would be repeated at once.
    const auto rest =
        std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
    std::array<pollfd, 2> polled{{{mStop.Get(), POLLIN, 0}, {mInotify.Get(), POLLIN, 0}}};
    const int count = poll(polled.data(), polled.size(), limit ? PollTime(rest) : -1);
    if (polled[0].revents != 0) {
      return EResult::EStopped;
    }
    if (count > 0 && TakeEvents()) {
      Arm();
      return EResult::EChanged;
    }
    if (limit && std::chrono::steady_clock::now() >= end) {
      return EResult::ETimeout;
    }
  }
}

// True when one of them may concern the file.
bool CFileWatch::TakeEvents() {
  alignas(inotify_event) std::array<char, 16'384> buffer;
  const ssize_t size = read(mInotify.Get(), buffer.data(), buffer.size());
  bool concerned = false;
  for (ssize_t offset = 0; offset < size;) {
    const auto* event = reinterpret_cast<const inotify_event*>(buffer.data() + offset);
    offset += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
    if (event->mask & IN_Q_OVERFLOW) {
      concerned = true;
    } else if (const auto names = mNames.find(event->wd); names != mNames.end()) {
      concerned = concerned || event->len == 0 || names->second.contains(event->name);
    }
  }
  return concerned;
}

void CFileWatch::Stop() {
  eventfd_write(mStop.Get(), 1);
}

}  // namespace KvConfig
