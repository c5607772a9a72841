#include "virtualcharger/hardware/beeper.h"

#include <fmt/format.h>

#include <cerrno>
#include <charconv>

namespace {

constexpr std::string_view kVolume = "volume";

}  // namespace

std::vector<SAttribute> CBeeper::Attributes() const {
  return {{kVolume, true, 0}};
}

int CBeeper::Read(std::string_view attribute, std::string& text) {
  if (attribute != kVolume) return ENOENT;
  const std::lock_guard lock(mMutex);
  text = mVolume;
  return 0;
}

int CBeeper::Write(std::string_view attribute, std::string_view text) {
  if (attribute != kVolume) return ENOENT;
  if (text.ends_with('\n')) text.remove_suffix(1);
  unsigned volume = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), volume);
  if (error != std::errc() || end != text.data() + text.size()) return EINVAL;
  const std::lock_guard lock(mMutex);
  mVolume = fmt::format("{}\n", volume);
  return 0;
}
