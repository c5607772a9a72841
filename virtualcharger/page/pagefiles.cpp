#include "virtualcharger/page/pagefiles.h"

#include <algorithm>

namespace {

struct SType {
  std::string_view ending;
  std::string_view type;
};

constexpr SType kTypes[] = {
    {".html", "text/html; charset=utf-8"},
    {".css", "text/css; charset=utf-8"},
    {".js", "text/javascript; charset=utf-8"},
    {".svg", "image/svg+xml"},
};

}  // namespace

const SPageFile* FindPageFile(std::string_view target) {
  if (!target.starts_with('/')) return nullptr;
  const auto name = target == "/" ? "index.html" : target.substr(1);
  const auto found = std::ranges::find(kPageFiles, name, &SPageFile::name);
  return found == kPageFiles.end() ? nullptr : &*found;
}

std::string_view ContentType(const SPageFile& file) {
  const auto found = std::ranges::find_if(
      kTypes, [&](const SType& type) { return file.name.ends_with(type.ending); });
  return found == std::end(kTypes) ? "application/octet-stream" : found->type;
}
