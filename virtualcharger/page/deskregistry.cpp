#include "virtualcharger/page/deskregistry.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <json/json.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <filesystem>
#include <stdexcept>
#include <string_view>
#include <system_error>

namespace {

constexpr std::size_t kLongestName = 32;

[[noreturn]] void Fail(const std::string& what) {
  throw std::system_error(errno, std::generic_category(), what);
}

void Check(const std::string& name) {
  const auto isLetter = [](unsigned char each) { return std::isalnum(each) != 0; };
  const auto isAllowed = [&](char each) {
    return isLetter(static_cast<unsigned char>(each)) ||
           std::string_view("._-").find(each) != std::string_view::npos;
  };
  if (!name.empty() && name.size() <= kLongestName &&
      isLetter(static_cast<unsigned char>(name[0])) && std::ranges::all_of(name, isAllowed)) {
    return;
  }
  throw std::runtime_error(fmt::format(
      "\"{}\" cannot be a charger's name: it has at most {} letters, digits, '.', '_' and '-', and "
      "begins with a letter or a digit",
      name, kLongestName));
}

// While one comes or goes, no other one does. Released with the descriptor.
CDescriptor LockFolder() {
  const auto folder = RunningChargersFolder();
  if (mkdir(folder.c_str(), S_IRWXU) != 0 && errno != EEXIST) Fail("cannot make " + folder);
  CheckRunningChargersFolder();
  CDescriptor descriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!descriptor || flock(descriptor.Get(), LOCK_EX) != 0) Fail("cannot lock " + folder);
  return descriptor;
}

void RemoveLeftovers() {
  std::error_code ignored;  // another try comes with the next charger
  for (const auto& entry : std::filesystem::directory_iterator(RunningChargersFolder(), ignored)) {
    if (entry.path().extension() != ".json") continue;
    const CDescriptor file(open(entry.path().c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (file && !IsHeldByCharger(file.Get())) std::filesystem::remove(entry.path(), ignored);
  }
}

bool Lock(int file) {
  struct flock lock {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  return fcntl(file, F_OFD_SETLK, &lock) == 0;
}

}  // namespace

CDeskRegistry::CDeskRegistry() {
  const auto folder = LockFolder();
  RemoveLeftovers();
  for (int number = 1; !Take(number == 1 ? "charger" : fmt::format("charger-{}", number));) {
    ++number;
  }
}

CDeskRegistry::CDeskRegistry(const std::string& name) {
  Check(name);
  const auto folder = LockFolder();
  RemoveLeftovers();
  if (!Take(name)) {
    const auto other = ReadRunningCharger(mPath);
    throw std::runtime_error(
        fmt::format("a charger named \"{}\" runs already (process {}); stop it, or give this one "
                    "another name with --name",
                    name, other ? other->pid : 0));
  }
}

CDeskRegistry::~CDeskRegistry() {
  try {
    const auto folder = LockFolder();
    unlink(mPath.c_str());
  } catch (const std::runtime_error&) {
    // Without its lock the entry stands for nothing.
  }
}

std::vector<SRunningCharger> CDeskRegistry::Others() const {
  auto chargers = RunningChargers();
  std::erase_if(chargers, [this](const SRunningCharger& each) { return each.name == mName; });
  return chargers;
}

// With the folder's lock held. False where the name is another one's.
bool CDeskRegistry::Take(const std::string& name) {
  mName = name;
  mPath = RunningChargersFolder() + '/' + name + ".json";
  mFile = CDescriptor(open(mPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
  if (!mFile) Fail("cannot open " + mPath);
  if (!Lock(mFile.Get())) return false;
  Write({});
  return true;
}

// A reader that comes in between sees a charger that is starting.
void CDeskRegistry::Write(const SRunningCharger& charger) {
  Json::Value entry;
  entry["name"] = mName;
  entry["pid"] = getpid();
  entry["port"] = charger.port;
  entry["url"] = charger.url;
  entry["store"] = charger.store;
  entry["sockets"] = charger.sockets;
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  const auto text = Json::writeString(builder, entry) + '\n';
  if (ftruncate(mFile.Get(), 0) != 0 ||
      pwrite(mFile.Get(), text.data(), text.size(), 0) != static_cast<ssize_t>(text.size())) {
    Fail("cannot write " + mPath);
  }
}
