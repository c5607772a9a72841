#include "utils/runningchargers.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <stdexcept>
#include <system_error>

#include "platform/kvconfig/storefile.h"
#include "platform/os/descriptor.h"

namespace {

bool IsRunning(const std::string& path) {
  const CDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
  return file && IsHeldByCharger(file.Get());
}

}  // namespace

std::string RunningChargersFolder() {
  // NOLINTNEXTLINE(concurrency-mt-unsafe): nobody changes the environment
  const char* runtime = std::getenv("XDG_RUNTIME_DIR");
  if (runtime != nullptr && *runtime == '/') return std::string(runtime) + "/virtual-charger";
  return fmt::format("/tmp/virtual-charger-{}", geteuid());
}

void CheckRunningChargersFolder() {
  const auto folder = RunningChargersFolder();
  struct stat status {};
  if (lstat(folder.c_str(), &status) != 0) {
    if (errno == ENOENT) return;
    throw std::system_error(errno, std::generic_category(), folder);
  }
  constexpr mode_t kOthers = S_IRWXG | S_IRWXO;
  if (!S_ISDIR(status.st_mode) || status.st_uid != geteuid() || (status.st_mode & kOthers) != 0) {
    throw std::runtime_error(fmt::format(
        "{} must be a folder of this user alone (mode 0700), but is not; remove it, or set "
        "XDG_RUNTIME_DIR to a folder of your own",
        folder));
  }
}

bool IsHeldByCharger(int file) {
  struct flock lock {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  return fcntl(file, F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

std::optional<SRunningCharger> ReadRunningCharger(const std::string& path) {
  const auto root = KvConfig::ReadStore(path).root;
  if (!root) return std::nullopt;
  const auto number = [&](const char* key, int limit) {
    const Json::Value& value = (*root)[key];
    return value.isInt() && value.asInt() >= 0 && value.asInt() <= limit ? value.asInt() : 0;
  };
  const auto text = [&](const char* key) {
    const Json::Value& value = (*root)[key];
    return value.isString() ? value.asString() : "";
  };
  return SRunningCharger{
      text("name"),
      number("pid", std::numeric_limits<pid_t>::max()),
      static_cast<std::uint16_t>(number("port", std::numeric_limits<std::uint16_t>::max())),
      text("url"),
      text("store"),
      text("sockets")};
}

std::vector<SRunningCharger> RunningChargers() {
  CheckRunningChargersFolder();
  std::vector<SRunningCharger> chargers;
  std::error_code end;
  for (const auto& entry : std::filesystem::directory_iterator(RunningChargersFolder(), end)) {
    const auto& path = entry.path();
    if (path.extension() != ".json" || !IsRunning(path)) continue;
    const auto charger = ReadRunningCharger(path);
    if (charger && charger->port != 0) chargers.push_back(*charger);
  }
  std::ranges::sort(chargers, {}, &SRunningCharger::name);
  return chargers;
}
