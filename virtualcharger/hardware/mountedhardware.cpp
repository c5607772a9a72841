#include "virtualcharger/hardware/mountedhardware.h"

#include <filesystem>
#include <system_error>
#include <utility>

CMountedHardware::CMountedHardware(CFuseServer::Trees trees) : mServer(std::move(trees)) {}

std::optional<std::string> CMountedHardware::Start(const std::vector<SBinding>& bindings) {
  const auto root = std::string(kScratchFolder) + "/files";
  std::error_code error;
  std::filesystem::create_directories(root, error);
  if (error) return "cannot create " + root + ": " + error.message();
  if (auto failure = mServer.Start(root)) return failure;
  return mBindings.Bind(root, bindings);
}
