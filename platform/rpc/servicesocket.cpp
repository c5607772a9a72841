#include "platform/rpc/servicesocket.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "platform/rpc/communicationexception.h"
#include "platform/rpc/log.h"

namespace Rpc {
namespace {

// Beyond this many waiting connections the kernel lets connect() wait.
constexpr int kBacklog = 64;

std::string ErrnoText() {
  const int error = errno;
  std::string text = std::generic_category().message(error);
  if (error == EACCES || error == EPERM || error == EROFS) {
    text += "; run it as a user who may write there, or give it another \"SocketDirectory\"";
  }
  return text;
}

// Whether the path still names the open file (or, for a socket, the file that was bound).
bool Names(const std::string& path, ino_t inode) {
  struct stat file {};
  return stat(path.c_str(), &file) == 0 && file.st_ino == inode;
}

ino_t InodeOf(const CDescriptor& descriptor) {
  struct stat file {};
  return fstat(descriptor.Get(), &file) == 0 ? file.st_ino : 0;
}

[[noreturn]] void Fail(const std::string& name, const std::string& what) {
  throw CommunicationException(fmt::format("Service \"{}\": {}", name, what));
}

sockaddr_un Address(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof(address.sun_path) - 1);
  return address;
}

std::string ProcessText(pid_t pid) {
  std::string name = "unknown";
  if (CDescriptor file(open(fmt::format("/proc/{}/comm", pid).c_str(), O_RDONLY | O_CLOEXEC));
      file) {
    char text[32] = {};
    const ssize_t size = read(file.Get(), text, sizeof(text) - 1);
    if (size > 1) {
      name.assign(text, static_cast<size_t>(size) - 1);
    }
  }
  return fmt::format("process {} ({})", pid, name);
}

}  // namespace

std::string ServiceSocketPath(const std::string& directory, const std::string& name) {
  if (name.empty() || name.front() == '.' || name.find('/') != std::string::npos) {
    Fail(name, "not a service name: it must be a plain file name");
  }
  std::string path = directory + "/" + name;
  if (path.size() >= sizeof(sockaddr_un::sun_path)) {
    Fail(name, fmt::format("{} is too long for a socket address ({} bytes at most)", path,
                           sizeof(sockaddr_un::sun_path) - 1));
  }
  return path;
}

CServiceSocket::CServiceSocket(const std::string& directory, const std::string& name)
    : mName(name),
      mPath(ServiceSocketPath(directory, name)),
      mLockPath(directory + "/." + name + ".lock") {
  std::error_code error;
  std::filesystem::create_directories(directory, error);
  if (error) {
    errno = error.value();
    Fail(mName, fmt::format("cannot create {}: {}", directory, ErrnoText()));
  }
  TakeLock();
  try {
    RefuseLiveListener();
  } catch (...) {
    RemoveLock();
    throw;
  }
}

CServiceSocket::~CServiceSocket() {
  if (IsInPlace()) {
    unlink(mPath.c_str());
  }
  RemoveLock();
}

bool CServiceSocket::IsInPlace() const {
  return mListener && Names(mPath, mInode);
}

void CServiceSocket::RemoveLock() {
  if (Names(mLockPath, InodeOf(mLock))) {
    unlink(mLockPath.c_str());
  }
}

void CServiceSocket::TakeLock() {
  // The holder before us removes its file as it ends: a lock on a file that has lost its name
  // protects nothing, so look again whether it is still the one in the directory.
  for (;;) {
    mLock = CDescriptor(open(mLockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0644));
    if (!mLock) {
      Fail(mName, fmt::format("cannot open {}: {}", mLockPath, ErrnoText()));
    }
    if (flock(mLock.Get(), LOCK_EX | LOCK_NB) != 0) {
      if (errno != EWOULDBLOCK) {
        Fail(mName, fmt::format("cannot lock {}: {}", mLockPath, ErrnoText()));
      }
      char text[16] = {};
      const bool known = pread(mLock.Get(), text, sizeof(text) - 1, 0) > 0;
      const pid_t pid = known ? static_cast<pid_t>(strtol(text, nullptr, 10)) : 0;
      Fail(mName, fmt::format("{} is served already by {}; stop it first, or give this process "
                              "another \"SocketDirectory\"",
                              mPath, known ? ProcessText(pid) : "another process"));
    }
    if (Names(mLockPath, InodeOf(mLock))) {
      break;
    }
  }
  const std::string pid = fmt::format("{}\n", getpid());
  if (ftruncate(mLock.Get(), 0) != 0 ||
      pwrite(mLock.Get(), pid.data(), pid.size(), 0) != static_cast<ssize_t>(pid.size())) {
    const std::string reason = ErrnoText();
    RemoveLock();
    Fail(mName, fmt::format("cannot write {}: {}", mLockPath, reason));
  }
}

// Somebody who does not know of the lock may listen on the path: ask before replacing it.
void CServiceSocket::RefuseLiveListener() const {
  CDescriptor probe(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (!probe) {
    Fail(mName, fmt::format("cannot create a socket: {}", ErrnoText()));
  }
  const sockaddr_un address = Address(mPath);
  if (connect(probe.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0 ||
      errno == EAGAIN) {
    ucred holder{};
    socklen_t size = sizeof(holder);
    const bool known = getsockopt(probe.Get(), SOL_SOCKET, SO_PEERCRED, &holder, &size) == 0;
    Fail(mName,
         fmt::format("{} is served already by {}; stop it first", mPath,
                     known && holder.pid != 0 ? ProcessText(holder.pid) : "another process"));
  }
  if (errno == EACCES) {
    Fail(mName, fmt::format("{} belongs to another user's process: {}", mPath, ErrnoText()));
  }
  if (errno == ECONNREFUSED) {
    struct stat file {};
    if (stat(mPath.c_str(), &file) == 0 && !S_ISSOCK(file.st_mode)) {
      Fail(mName, fmt::format("{} is not a socket; move it away", mPath));
    }
    Write(&ILogger::Info, "Replacing the socket {} that a dead process left", mPath);
    unlink(mPath.c_str());
  }
}

void CServiceSocket::Listen() {
  mListener = CDescriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  const sockaddr_un address = Address(mPath);
  if (!mListener ||
      bind(mListener.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
    Fail(mName, fmt::format("cannot bind {}: {}", mPath, ErrnoText()));
  }
  // Everyone may connect; whoever is not allowed is turned away after a look at who it is, so that
  // the log tells who tried.
  struct stat file {};
  if (chmod(mPath.c_str(), 0666) != 0 || stat(mPath.c_str(), &file) != 0 ||
      listen(mListener.Get(), kBacklog) != 0) {
    const std::string reason = ErrnoText();
    unlink(mPath.c_str());
    Fail(mName, fmt::format("cannot listen on {}: {}", mPath, reason));
  }
  mInode = file.st_ino;
  mGroup = file.st_gid;
}

}  // namespace Rpc
