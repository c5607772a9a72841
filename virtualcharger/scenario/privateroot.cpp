#include "virtualcharger/scenario/privateroot.h"

#include <fmt/format.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>

namespace {

constexpr auto kPattern = "/charger-XXXXXX";
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

}  // namespace

CPrivateRoot::CPrivateRoot() {
  const char* runtime = std::getenv("XDG_RUNTIME_DIR");
  mPath = runtime != nullptr && *runtime == '/' && IsUsable(runtime) ? runtime : "/tmp";
  mPath += kPattern;
  if (mkdtemp(mPath.data()) == nullptr) {
    throw std::runtime_error(
        fmt::format("cannot make a folder {}: {}", mPath, std::generic_category().message(errno)));
  }
  std::filesystem::create_directory(mPath + "/etc");
  WriteStore();
}

void CPrivateRoot::WriteStore() const {
  std::ofstream store(Store());
  store << fmt::format(kStore, Sockets());
  if (!store.flush()) throw std::runtime_error("cannot write " + Store());
}

CPrivateRoot::~CPrivateRoot() {
  std::error_code ignored;  // nobody is left to tell
  if (!mKeep) std::filesystem::remove_all(mPath, ignored);
}
