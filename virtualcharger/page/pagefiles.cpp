#include "virtualcharger/page/pagefiles.h"

#include <fmt/format.h>

#include <algorithm>

namespace {

struct SType {
  std::string_view ending;
  std::string_view type;
};

constexpr std::string_view kPage = "/";
constexpr std::string_view kPageFile = "index.html";
constexpr std::string_view kLamp = "/lamp";
constexpr std::string_view kLampFile = "lamp.html";

constexpr SType kTypes[] = {
    {".html", "text/html; charset=utf-8"},
    {".css", "text/css; charset=utf-8"},
    {".js", "text/javascript; charset=utf-8"},
    {".svg", "image/svg+xml"},
};

}  // namespace

const SPageFile* FindPageFile(std::string_view target) {
  if (!target.starts_with('/')) return nullptr;
  const auto name = target == kPage ? kPageFile : target == kLamp ? kLampFile : target.substr(1);
  const auto found = std::ranges::find(kPageFiles, name, &SPageFile::name);
  return found == kPageFiles.end() ? nullptr : &*found;
}

std::string_view ContentType(const SPageFile& file) {
  const auto found = std::ranges::find_if(
      kTypes, [&](const SType& type) { return file.name.ends_with(type.ending); });
  return found == std::end(kTypes) ? "application/octet-stream" : found->type;
}

std::string ContentPolicy(const SPageFile* file) {
  const bool isLamp = file != nullptr && file->name == kLampFile;
  return fmt::format(
      "default-src 'self'; frame-src {}; base-uri 'none'; form-action 'none'; frame-ancestors {}",
      isLamp ? "'none'" : "http://127.0.0.1:*/lamp",
      isLamp ? "http://127.0.0.1:* http://localhost:*" : "'none'");
}
