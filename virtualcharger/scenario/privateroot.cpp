#include "virtualcharger/scenario/privateroot.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace {

constexpr auto kPattern = "/charger-XXXXXX";
constexpr auto kPrefix = "charger-";
constexpr auto kLock = "/lock";
constexpr auto kLongestSocket = "/run/FeedbackGenCtrl.lock";

constexpr auto kStore = R"({{
  "communication": {{"SocketDirectory": "{}"}},
  "settings": {{
    "HmiLedIntensityMode": "Fixed",
    "HmiLedIntensityManual": 100,
    "HmiBuzzerVolume": 4,
    "InstallationComplete": true
  }},
  "hwinfo": {{"HwHasLed": true, "HwHasMeterDisplay": true, "HwHasBuzzer": true}}
}}
)";

bool IsUsable(const std::string& folder) {
  const auto longest = folder + kPattern + kLongestSocket;
  return longest.size() < sizeof(sockaddr_un::sun_path) && access(folder.c_str(), W_OK) == 0;
}

// Nothing where there is no such file or another run holds it.
CDescriptor Lock(const std::string& path, int flags) {
  CDescriptor file(open(path.c_str(), flags | O_RDWR | O_CLOEXEC | O_NOFOLLOW, 0600));
  return file && flock(file.Get(), LOCK_EX | LOCK_NB) == 0 ? std::move(file) : CDescriptor();
}

void RemoveLeftovers(const std::string& parent) {
  std::error_code ignored;  // the next run tries again
  for (const auto& entry : std::filesystem::directory_iterator(parent, ignored)) {
    const auto& path = entry.path();
    struct stat folder {};
    if (!path.filename().string().starts_with(kPrefix) || lstat(path.c_str(), &folder) != 0 ||
        !S_ISDIR(folder.st_mode) || folder.st_uid != geteuid()) {
      continue;
    }
    if (const auto lock = Lock(path.string() + kLock, 0)) {
      std::filesystem::remove_all(path, ignored);
    }
  }
}

std::string MakeFolder() {
  // NOLINTNEXTLINE(concurrency-mt-unsafe): nobody changes the environment
  const char* runtime = std::getenv("XDG_RUNTIME_DIR");
  std::string path = runtime != nullptr && *runtime == '/' && IsUsable(runtime) ? runtime : "/tmp";
  RemoveLeftovers(path);
  path += kPattern;
  if (mkdtemp(path.data()) != nullptr) return path;
  throw std::runtime_error(
      fmt::format("cannot make a folder {}: {}", path, std::generic_category().message(errno)));
}

}  // namespace

// From here on the destructor takes it away, whatever fails.
CPrivateRoot::CPrivateRoot() : CPrivateRoot(MakeFolder()) {
  std::filesystem::create_directory(mPath + "/etc");
  WriteStore();
  // Under its name only when it is held: a run that begins now must not take it for a leftover.
  const auto lock = mPath + kLock;
  mLock = Lock(lock + ".new", O_CREAT | O_EXCL);
  if (!mLock || rename((lock + ".new").c_str(), lock.c_str()) != 0) {
    throw std::runtime_error(
        fmt::format("cannot lock {}: {}", lock, std::generic_category().message(errno)));
  }
}

void CPrivateRoot::Keep() {
  mKeep = true;
  std::filesystem::remove(mPath + kLock);
}

void CPrivateRoot::WriteStore() const {
  WriteStore(fmt::format(kStore, Sockets()));
}

void CPrivateRoot::WriteStore(const std::string& text) const {
  namespace fs = std::filesystem;
  std::error_code ignored;  // told when the file cannot be opened
  // Neither a link's target nor a FIFO's reader gets it.
  if (!fs::is_regular_file(fs::symlink_status(Store(), ignored))) fs::remove(Store(), ignored);
  errno = 0;
  std::ofstream store(Store());
  store << text;
  if (store.flush()) return;
  throw std::runtime_error(
      fmt::format("cannot write {}: {}", Store(), std::generic_category().message(errno)));
}

CPrivateRoot::~CPrivateRoot() {
  std::error_code ignored;  // nobody is left to tell
  if (!mKeep) std::filesystem::remove_all(mPath, ignored);
}
