#include "virtualcharger/desk/runfolder.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include <utility>

namespace {

bool AreSame(int descriptor, const struct stat& found) {
  struct stat known {};
  return fstat(descriptor, &known) == 0 && known.st_dev == found.st_dev &&
         known.st_ino == found.st_ino;
}

}  // namespace

CRunFolder::CRunFolder(const CPrivateRoot& root) {
  for (auto&& [name, path] : {std::pair("the run's folder", root.Path()),
                              std::pair("the store's folder", root.StoreFolder()),
                              std::pair("the sockets' folder", root.Sockets()),
                              std::pair("the daemon's log", root.Log("feedback"))}) {
    mPlaces.push_back({name, path, CDescriptor()});
  }
}

std::string CRunFolder::Trouble() {
  for (auto& [name, path, known] : mPlaces) {
    if (!known) known = CDescriptor(open(path.c_str(), O_PATH | O_CLOEXEC));
    struct stat found {};
    const bool there = stat(path.c_str(), &found) == 0;
    if (!known || (there && AreSame(known.Get(), found))) continue;
    return fmt::format("{} {} {}: end this charger (Ctrl-C) and start it again", name, path,
                       there ? "was replaced" : "is gone");
  }
  return {};
}
