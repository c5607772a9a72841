#include "virtualcharger/desk/library.h"

#include <algorithm>
#include <fstream>

namespace {

namespace fs = std::filesystem;

std::string FirstComment(const fs::path& path) {
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("# ")) return line.substr(2);
  }
  return {};
}

}  // namespace

CLibrary::CLibrary(const fs::path& programFolder) {
  std::error_code error;
  auto folder = programFolder / "../share/virtual-charger/scenarios";
  if (!fs::is_directory(folder, error)) folder = SCENARIO_LIBRARY;
  for (const auto& entry : fs::directory_iterator(folder, error)) {
    if (entry.path().extension() != ".scenario") continue;
    mEntries.push_back({entry.path().stem(), FirstComment(entry.path()), entry.path()});
  }
  std::ranges::sort(mEntries, {}, &SEntry::name);
}

const CLibrary::SEntry* CLibrary::Find(const std::string& name) const {
  const auto found = std::ranges::find(mEntries, name, &SEntry::name);
  return found == mEntries.end() ? nullptr : &*found;
}
