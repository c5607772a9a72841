#include "tools/feedbackctl/storecheck.h"

#include <fmt/format.h>

#include <memory>
#include <stdexcept>

#include "platform/kvconfig/storefile.h"
#include "platform/rpc/communicationconfig.h"
#include "platform/rpc/log.h"
#include "tools/feedbackctl/settingtext.h"

namespace {

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

std::string Place(const std::string& path, std::string_view section, std::string_view key) {
  return fmt::format("{}: section \"{}\"{}", path, section,
                     key.empty() ? "" : fmt::format(", key \"{}\"", key));
}

void CheckSection(const Json::Value& root, const std::string& path, const char* name,
                  SStoreVerdict& verdict) {
  const auto mismatch = [&](std::string_view key, const Json::Value& found,
                            std::string_view expected) {
    verdict.problems.push_back(fmt::format("{}: found {}, expected {}", Place(path, name, key),
                                           JsonText(found), expected));
  };
  const Json::Value& section = root[name];
  if (!section.isNull() && !section.isObject()) {
    mismatch("", section, "an object");
    return;
  }
  for (const auto& key : section.getMemberNames()) {
    const auto* setting = FindSetting(name, key);
    if (setting == nullptr) {
      // Other processes may keep settings of their own there.
      verdict.hints.push_back(fmt::format("{}: note: the daemon does not read it{}",
                                          Place(path, name, key), HintOfKey(name, key)));
    } else if (!Fits(*setting, section[key])) {
      mismatch(key, section[key], setting->expected);
    }
  }
}

}  // namespace

SStoreVerdict CheckStore(const std::string& path) {
  const auto content = KvConfig::ReadStore(path);
  if (!content.root) {
    throw std::runtime_error(content.error);
  }
  SStoreVerdict verdict{CommunicationProblems(path), {}};
  for (const char* section : {Settings::kSection, Settings::kHardwareSection}) {
    CheckSection(*content.root, path, section, verdict);
  }
  return verdict;
}

std::vector<std::string> CommunicationProblems(const std::string& path) {
  const auto problems = std::make_shared<CProblems>();
  Rpc::SetLogger(problems);
  Rpc::ReadCommunicationConfig(path);
  Rpc::SetLogger(nullptr);
  return problems->mMessages;
}

Json::Value EffectiveSetting(const std::string& path, const std::string& section,
                             const std::string& key) {
  const auto& setting = *FindSetting(section, key);
  const auto content = KvConfig::ReadStore(path);
  const Json::Value value =
      content.root ? KvConfig::SectionOf(*content.root, section)[key] : Json::Value();
  return value.isNull() || !Fits(setting, value) ? DefaultOf(setting) : value;
}
