#include <fmt/format.h>

#include <stdexcept>
#include <utility>
#include <vector>

#include "platform/kvconfig/kvconfig.h"
#include "platform/kvconfig/storefile.h"
#include "platform/rpc/communicationconfig.h"
#include "platform/rpc/log.h"
#include "tools/feedbackctl/commands.h"
#include "tools/feedbackctl/settingtext.h"

namespace {

constexpr auto kSection = "settings";

KvConfig::StoreContent ReadGoodStore(const std::string& path) {
  auto content = KvConfig::ReadStore(path);
  if (!content.root) {
    throw std::runtime_error(content.error);
  }
  return content;
}

[[noreturn]] void FailForUnknown(const std::string& key, std::string_view remedy) {
  throw std::runtime_error(
      fmt::format("\"{}\" is not a setting of the daemon; its settings are\n{}{}", key,
                  SettingLines(kSection), remedy));
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

// Keeps what the RPC layer would log.
class CProblems : public Rpc::ILogger {
 public:
  void Critical(const std::string& message) override { mMessages.push_back(message); }
  void Error(const std::string& message) override { mMessages.push_back(message); }
  void Warning(const std::string& message) override { mMessages.push_back(message); }
  void Info(const std::string& /*message*/) override {}
  void Debug(const std::string& /*message*/) override {}
  void Trace(const std::string& /*message*/) override {}

  std::vector<std::string> mMessages;
};

// The daemon's own verdict on where its sockets are and who may use them.
std::vector<std::string> CommunicationProblems(const std::string& path) {
  const auto problems = std::make_shared<CProblems>();
  Rpc::SetLogger(problems);
  Rpc::ReadCommunicationConfig(path);
  Rpc::SetLogger(nullptr);
  return problems->mMessages;
}

std::string Problem(const std::string& path, std::string_view section, std::string_view key,
                    const Json::Value& found, std::string_view expected) {
  return fmt::format("{}: section \"{}\"{}: found {}, expected {}", path, section,
                     key.empty() ? "" : fmt::format(", key \"{}\"", key), JsonText(found),
                     expected);
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
  const auto content = ReadGoodStore(path);
  auto problems = CommunicationProblems(path);
  for (const char* name : {kSection, "hwinfo"}) {
    const Json::Value& section = (*content.root)[name];
    if (!section.isNull() && !section.isObject()) {
      problems.push_back(Problem(path, name, "", section, "an object"));
      continue;
    }
    for (const auto& key : section.getMemberNames()) {
      const auto* setting = FindSetting(name, key);
      if (setting == nullptr) {
        // Other processes may keep settings of their own there.
        tool.out << fmt::format(
            "{}: section \"{}\", key \"{}\": note: the daemon does not read it\n", path, name, key);
      } else if (!Fits(*setting, section[key])) {
        problems.push_back(Problem(path, name, key, section[key], setting->expected));
      }
    }
  }
  for (const auto& problem : problems) {
    tool.out << problem << '\n';
  }
  tool.out << fmt::format("{}: {}\n", path,
                          problems.empty() ? "good" : fmt::format("problems: {}", problems.size()));
  return problems.empty() ? kDone : kFailed;
}
