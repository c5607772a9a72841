#include "virtualcharger/hardware/fuseserver.h"

#define FUSE_USE_VERSION 312
#include <fcntl.h>
#include <fmt/format.h>
#include <fuse.h>
#include <fuse_lowlevel.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "platform/log/log.h"

namespace {

using Trees = CFuseServer::Trees;

// A blocked attribute holds one thread: more than a charger has attributes.
constexpr int kThreads = 32;

struct STarget {
  IFileTree* tree = nullptr;
  std::string path;
};

// A second read of the same opening continues the first one's text, as in the kernel.
struct SOpening {
  STarget target;
  std::uint64_t handle = 0;
  std::mutex mutex;
  std::string text{};  // guarded by mutex
};

// What the operations work on: libfuse's private data.
struct SServed {
  const Trees trees;
  std::mutex mutex{};
  // Guarded by mutex. Those still open at the end go with it.
  std::map<SOpening*, std::unique_ptr<SOpening>> openings{};
};

SServed& Served() {
  return *static_cast<SServed*>(fuse_get_context()->private_data);
}

STarget Find(std::string path) {
  path.erase(0, 1);
  const auto slash = path.find('/');
  const auto found = Served().trees.find(path.substr(0, slash));
  if (found == Served().trees.end()) return {};
  return {found->second.get(), slash == std::string::npos ? "" : path.substr(slash + 1)};
}

bool IsRoot(const char* path) {
  return std::string_view(path) == "/";
}

std::optional<IFileTree::SNode> LookUp(const char* path) {
  if (IsRoot(path)) return IFileTree::SNode{true, false};
  const auto target = Find(path);
  if (target.tree == nullptr) return std::nullopt;
  return target.tree->Look(target.path);
}

SOpening& Opening(const fuse_file_info* file) {
  return *reinterpret_cast<SOpening*>(file->fh);
}

// libfuse would print on its own.
void LogLine(fuse_log_level, const char* format, va_list arguments) {
  char line[256];
  std::vsnprintf(line, sizeof(line), format, arguments);
  LOG(Debug, "libfuse: {}", static_cast<const char*>(line));
}

void* Initialise(fuse_conn_info* connection, fuse_config* configuration) {
  configuration->attr_timeout = 0;
  configuration->entry_timeout = 0;
  configuration->negative_timeout = 0;
  // Writes are a few bytes: a pipe in between only costs.
  connection->want &= ~static_cast<unsigned>(FUSE_CAP_SPLICE_READ);
  return fuse_get_context()->private_data;
}

int GetAttributes(const char* path, struct stat* status, fuse_file_info*) {
  const auto node = LookUp(path);
  if (!node) return -ENOENT;
  *status = {};
  status->st_uid = geteuid();
  status->st_gid = getegid();
  status->st_nlink = 1;
  if (node->directory) {
    status->st_mode = S_IFDIR | 0755;
  } else {
    status->st_mode = S_IFREG | (node->writable ? 0644U : 0444U);
    status->st_size = 4096;
  }
  return 0;
}

int ReadFolder(const char* path, void* buffer, fuse_fill_dir_t fill, off_t, fuse_file_info*,
               fuse_readdir_flags) {
  std::vector<std::string> names{".", ".."};
  if (IsRoot(path)) {
    for (const auto& [name, tree] : Served().trees) names.push_back(name);
  } else {
    const auto target = Find(path);
    if (target.tree == nullptr) return -ENOENT;
    const auto found = target.tree->List(target.path);
    names.insert(names.end(), found.begin(), found.end());
  }
  for (const auto& name : names) fill(buffer, name.c_str(), nullptr, 0, fuse_fill_dir_flags{});
  return 0;
}

int Access(const char* path, int mask) {
  if (IsRoot(path)) return 0;
  const auto target = Find(path);
  if (target.tree == nullptr) return -ENOENT;
  return -target.tree->Probe(target.path, (mask & W_OK) != 0);
}

int Open(const char* path, fuse_file_info* file) {
  auto opening = std::make_unique<SOpening>();
  opening->target = Find(path);
  const auto& target = opening->target;
  if (target.tree == nullptr) return -ENOENT;
  const bool forWriting = (file->flags & O_ACCMODE) != O_RDONLY;
  if (const int error = target.tree->Open(target.path, forWriting, opening->handle); error != 0) {
    return -error;
  }
  file->fh = reinterpret_cast<std::uint64_t>(opening.get());
  file->direct_io = 1;
  const std::lock_guard lock(Served().mutex);
  Served().openings.emplace(opening.get(), std::move(opening));
  return 0;
}

int Release(const char*, fuse_file_info* file) {
  const std::lock_guard lock(Served().mutex);
  Served().openings.erase(&Opening(file));
  return 0;
}

int Read(const char*, char* buffer, size_t size, off_t offset, fuse_file_info* file) {
  auto& opening = Opening(file);
  const std::lock_guard lock(opening.mutex);
  if (offset == 0) {
    std::string text;
    const int error = opening.target.tree->Read(opening.target.path, opening.handle, text);
    if (error != 0) return -error;
    opening.text = std::move(text);
  }
  const auto start = static_cast<std::size_t>(offset);
  return start >= opening.text.size() ? 0
                                      : static_cast<int>(opening.text.copy(buffer, size, start));
}

int Write(const char*, const char* buffer, size_t size, off_t, fuse_file_info* file) {
  const auto& opening = Opening(file);
  std::size_t accepted = 0;
  const int error =
      opening.target.tree->Write(opening.target.path, opening.handle, {buffer, size}, accepted);
  return error != 0 ? -error : static_cast<int>(accepted);
}

int Control(const char*, unsigned request, void* argument, fuse_file_info* file, unsigned, void*) {
  const auto& target = Opening(file).target;
  return -target.tree->Control(target.path, request, reinterpret_cast<std::uintptr_t>(argument));
}

// Writers truncate first; an attribute does not mind, and does not take it for a write either.
int Truncate(const char*, off_t, fuse_file_info*) {
  return 0;
}

int Create(const char*, mode_t, fuse_file_info*) {
  return -EACCES;
}

fuse_operations Operations() {
  fuse_operations operations{};
  operations.init = Initialise;
  operations.getattr = GetAttributes;
  operations.readdir = ReadFolder;
  operations.access = Access;
  operations.open = Open;
  operations.release = Release;
  operations.read = Read;
  operations.write = Write;
  operations.ioctl = Control;
  operations.truncate = Truncate;
  operations.create = Create;
  return operations;
}

}  // namespace

// One mount and the threads that serve it. libfuse's own loop cannot be ended while another process
// holds a file open, so the threads take turns in waiting for a request or for the stop.
class CFuseServer::CSession {
 public:
  explicit CSession(Trees trees) : mServed{std::move(trees)}, mStop(eventfd(0, EFD_CLOEXEC)) {
    fuse_set_log_func(LogLine);
    fuse_args arguments = FUSE_ARGS_INIT(0, nullptr);
    fuse_opt_add_arg(&arguments, "virtual-charger");
    fuse_opt_add_arg(&arguments, "-oallow_other,fsname=virtual-charger");
    const auto operations = Operations();
    mFuse = fuse_new(&arguments, &operations, sizeof(operations), &mServed);
    fuse_opt_free_args(&arguments);
  }

  CSession(const CSession&) = delete;
  CSession& operator=(const CSession&) = delete;

  ~CSession() {
    for (const auto& [name, tree] : mServed.trees) tree->Close();
    if (mMounted) {
      eventfd_write(mStop, 1);
      for (auto& thread : mThreads) thread.join();
      fuse_unmount(mFuse);
    }
    if (mFuse != nullptr) fuse_destroy(mFuse);
    close(mStop);
  }

  bool Start(const std::string& mountPoint) {
    if (mStop < 0 || mFuse == nullptr || fuse_mount(mFuse, mountPoint.c_str()) != 0) return false;
    mMounted = true;
    const int device = fuse_session_fd(fuse_get_session(mFuse));
    fcntl(device, F_SETFL, fcntl(device, F_GETFL) | O_NONBLOCK);
    for (int count = 0; count < kThreads; ++count) mThreads.emplace_back([this] { Serve(); });
    return true;
  }

 private:
  void Serve() {
    fuse_buf request{};
    while (Receive(request)) fuse_session_process_buf(fuse_get_session(mFuse), &request);
    std::free(request.mem);
  }

  bool Receive(fuse_buf& request) {
    const std::lock_guard turn(mReceiving);
    auto* session = fuse_get_session(mFuse);
    for (;;) {
      pollfd sources[]{{fuse_session_fd(session), POLLIN, 0}, {mStop, POLLIN, 0}};
      poll(sources, 2, -1);
      if (sources[1].revents != 0) return false;
      const int received = fuse_session_receive_buf(session, &request);
      if (received > 0) return true;
      if (received != -EAGAIN && received != -EINTR) return false;
    }
  }

  SServed mServed;
  const int mStop;
  fuse* mFuse = nullptr;
  bool mMounted = false;
  std::mutex mReceiving;
  std::vector<std::thread> mThreads;
};

CFuseServer::CFuseServer(Trees trees) : mSession(std::make_unique<CSession>(std::move(trees))) {}

CFuseServer::~CFuseServer() = default;

std::optional<std::string> CFuseServer::Start(const std::string& mountPoint) {
  if (mSession->Start(mountPoint)) return std::nullopt;
  const auto error = std::error_code(errno, std::generic_category()).message();
  return fmt::format(
      "cannot mount the virtual hardware on {}: {}; /dev/fuse must be the kernel's own: load the "
      "module with 'sudo modprobe fuse', or start the container with --device /dev/fuse --cap-add "
      "SYS_ADMIN",
      mountPoint, error);
}
