#include "virtualcharger/hardware/privatenamespace.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

namespace {

namespace fs = std::filesystem;

constexpr auto kNamespaceRemedy =
    "; run as root, or allow user namespaces to ordinary users (sysctl "
    "kernel.unprivileged_userns_clone=1, kernel.apparmor_restrict_unprivileged_userns=0, "
    "user.max_user_namespaces above 0), or start the container with --cap-add SYS_ADMIN";

std::string Failure(const std::string& what, int error = errno) {
  return what + ": " + std::error_code(error, std::generic_category()).message();
}

// libfuse ends the process when it misses its device.
std::optional<std::string> CheckFuse() {
  const int device = open("/dev/fuse", O_RDWR | O_CLOEXEC);
  if (device >= 0) {
    struct stat file {};
    const bool isDevice = fstat(device, &file) == 0 && S_ISCHR(file.st_mode);
    close(device);
    if (isDevice) return std::nullopt;
    return "/dev/fuse is no device here; make it with 'mknod /dev/fuse c 10 229', or start the "
           "container with --device /dev/fuse";
  }
  const auto failure = Failure("cannot open /dev/fuse");
  if (errno == EACCES || errno == EPERM) {
    return failure +
           "; run as root, or allow it with 'sudo chmod a+rw /dev/fuse', or start the "
           "container with --device /dev/fuse";
  }
  return failure +
         "; load the module with 'sudo modprobe fuse', or start the container with "
         "--device /dev/fuse --cap-add SYS_ADMIN";
}

bool WriteFile(const char* path, const std::string& text) {
  const int file = open(path, O_WRONLY | O_CLOEXEC);
  if (file < 0) return false;
  const bool written = write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  const int error = errno;
  close(file);
  errno = error;
  return written;
}

// The own user stays who it is, so that files and peers inside see the same one as outside.
bool EnterUserNamespace() {
  const auto user = std::to_string(geteuid());
  const auto group = std::to_string(getegid());
  if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
  return WriteFile("/proc/self/setgroups", "deny") &&
         WriteFile("/proc/self/uid_map", user + ' ' + user + " 1") &&
         WriteFile("/proc/self/gid_map", group + ' ' + group + " 1");
}

// An empty folder or file to mount on.
std::optional<std::string> MakePlace(const fs::path& path, bool directory) {
  const int error = directory ? mkdir(path.c_str(), 0755) : mknod(path.c_str(), S_IFREG | 0644, 0);
  return error == 0 ? std::nullopt : std::optional(Failure("cannot create " + path.string()));
}

// Everything that is in one folder comes into the other, an empty one.
std::optional<std::string> BindEntries(const fs::path& from, const fs::path& to) {
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(from, error)) {
    const auto place = to / entry.path().filename();
    if (entry.is_symlink(error)) {
      fs::copy_symlink(entry.path(), place, error);
      continue;
    }
    if (auto failure = MakePlace(place, entry.is_directory(error))) return failure;
    if (mount(entry.path().c_str(), place.c_str(), nullptr, MS_BIND | MS_REC, nullptr) != 0 &&
        errno != ENOENT) {
      return Failure("cannot bind " + entry.path().string() + " to " + place.string());
    }
  }
  return error ? std::optional(Failure("cannot read " + from.string(), error.value()))
               : std::nullopt;
}

}  // namespace

std::optional<std::string> EnterPrivateNamespace() {
  if (auto failure = CheckFuse()) return failure;
  if (unshare(CLONE_NEWNS) != 0 && (errno != EPERM || !EnterUserNamespace())) {
    return Failure("no private mount namespace") + kNamespaceRemedy;
  }
  if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) {
    return Failure("cannot make the mounts private") + kNamespaceRemedy;
  }
  if (mount("virtual-charger", kScratchFolder, "tmpfs", MS_NOSUID | MS_NODEV, "mode=0755") != 0) {
    return Failure(std::string("cannot mount a memory file system on ") + kScratchFolder) +
           kNamespaceRemedy;
  }
  return std::nullopt;
}

CBindings::~CBindings() {
  for (; !mMounts.empty(); mMounts.pop_back()) umount2(mMounts.back().c_str(), MNT_DETACH);
}

std::optional<std::string> CBindings::Bind(const std::string& root,
                                           const std::vector<SBinding>& bindings) {
  // A new parent hides what was bound below it before.
  for (const auto& binding : bindings) {
    if (access(binding.target.c_str(), F_OK) == 0) continue;
    if (auto failure = AddToParent(binding)) return failure;
  }
  for (const auto& [source, target, directory] : bindings) {
    const auto path = root + '/' + source;
    if (mount(path.c_str(), target.c_str(), nullptr, MS_BIND, nullptr) != 0) {
      return Failure("cannot bind " + path + " over " + target);
    }
    mMounts.push_back(target);
  }
  return std::nullopt;
}

std::optional<std::string> CBindings::AddToParent(const SBinding& binding) {
  const fs::path target(binding.target);
  const auto parent = target.parent_path();
  const auto original = fs::path(kScratchFolder) / "original";
  std::error_code error;
  fs::create_directories(original, error);
  if (error || mount(parent.c_str(), original.c_str(), nullptr, MS_BIND | MS_REC, nullptr) != 0) {
    return Failure("cannot keep " + parent.string() + " in sight", error ? error.value() : errno);
  }
  std::optional<std::string> failure;
  if (mount("virtual-charger", parent.c_str(), "tmpfs", MS_NOSUID, "mode=0755") == 0) {
    mMounts.push_back(parent);
    failure = BindEntries(original, parent);
    if (!failure) failure = MakePlace(target, binding.directory);
  } else {
    failure = Failure("cannot mount a memory file system on " + parent.string());
  }
  umount2(original.c_str(), MNT_DETACH);
  return failure;
}
