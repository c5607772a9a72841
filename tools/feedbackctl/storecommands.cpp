#include <fmt/format.h>

#include <stdexcept>

#include "platform/kvconfig/kvconfig.h"
#include "platform/kvconfig/storefile.h"
#include "tools/feedbackctl/commands.h"
#include "tools/feedbackctl/settingtext.h"
#include "tools/feedbackctl/storecheck.h"

namespace {

using Settings::kSection;

KvConfig::StoreContent ReadGoodStore(const std::string& path) {
  auto content = KvConfig::ReadStore(path);
  if (!content.root) {
    throw std::runtime_error(content.error);
  }
  return content;
}

[[noreturn]] void FailForUnknown(const std::string& key, std::string_view remedy) {
  auto hint = HintOfKey(kSection, key);
  if (hint.empty()) {
    hint = fmt::format("; its settings are\n{}", SettingLines(kSection));
  } else {
    hint += '\n';
  }
  throw std::runtime_error(
      fmt::format("\"{}\" is not a setting of the daemon{}{}", key, hint, remedy));
}

std::string SettingLine(std::string_view key, const Json::Value& value) {
  const auto* setting = FindSetting(kSection, key);
  if (setting == nullptr) {
    return fmt::format("{:<21}  {}  (not a setting of the daemon)\n", key, ShownText(value));
  }
  if (value.isNull()) {
    return fmt::format("{:<21}  {}  (default)\n", key, ShownText(DefaultOf(*setting)));
  }
  return fmt::format(
      "{:<21}  {}{}\n", key, ShownText(value),
      Fits(*setting, value) ? "" : fmt::format("  (does not fit: expected {})", setting->expected));
}

}  // namespace

int RunGet(const CInvocation& invocation, const CTool& tool) {
  const auto content = ReadGoodStore(invocation.Store());
  const Json::Value& section = KvConfig::SectionOf(*content.root, kSection);
  if (!invocation.arguments.empty()) {
    const std::string& key = invocation.arguments[0];
    const auto* setting = FindSetting(kSection, key);
    if (setting == nullptr && !section.isMember(key)) {
      FailForUnknown(key, "and the store does not hold it either");
    }
    const Json::Value& value = section[key];
    tool.out << ShownText(value.isNull() && setting ? DefaultOf(*setting) : value) << '\n';
    return kDone;
  }
  for (const auto& setting : kSettings) {
    if (setting.section == kSection) {
      tool.out << SettingLine(setting.key, section[std::string(setting.key)]);
    }
  }
  for (const auto& key : section.getMemberNames()) {
    if (FindSetting(kSection, key) == nullptr) {
      tool.out << SettingLine(key, section[key]);
    }
  }
  return kDone;
}

int RunSet(const CInvocation& invocation, const CTool& tool) {
  const std::string& key = invocation.arguments[0];
  const auto* setting = FindSetting(kSection, key);
  if (setting == nullptr && !invocation.Has("--force")) {
    FailForUnknown(key, "--force writes another key all the same");
  }
  const Json::Value value = ParseValue(invocation.arguments[1]);
  if (setting != nullptr && !Fits(*setting, value)) {
    throw std::runtime_error(fmt::format("{}: found {}, expected {}; nothing was changed", key,
                                         JsonText(value), setting->expected));
  }
  KvConfig::WriteStore(invocation.Store(), kSection, key, value);
  tool.out << SettingLine(key, value);
  return kDone;
}

int RunCheckConfig(const CInvocation& invocation, const CTool& tool) {
  const std::string& path = invocation.arguments[0];
  const auto [problems, hints] = CheckStore(path);
  for (const auto* lines : {&hints, &problems}) {
    for (const auto& line : *lines) {
      tool.out << line << '\n';
    }
  }
  tool.out << fmt::format("{}: {}\n", path,
                          problems.empty() ? "good" : fmt::format("problems: {}", problems.size()));
  return problems.empty() ? kDone : kFailed;
}
