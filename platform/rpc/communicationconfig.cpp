#include "platform/rpc/communicationconfig.h"

#include <json/json.h>
#include <pwd.h>

#include <charconv>
#include <filesystem>
#include <optional>

#include "platform/kvconfig/storefile.h"
#include "platform/rpc/log.h"

namespace Rpc {
namespace {

constexpr const char* kSection = "communication";

std::optional<uid_t> UserId(const std::string& user) {
  uid_t number = 0;
  const char* end = user.data() + user.size();
  if (const auto result = std::from_chars(user.data(), end, number);
      result.ec == std::errc() && result.ptr == end) {
    return number;
  }
  passwd entry{};
  passwd* found = nullptr;
  std::vector<char> buffer(16'384);
  if (getpwnam_r(user.c_str(), &entry, buffer.data(), buffer.size(), &found) == 0 && found) {
    return found->pw_uid;
  }
  return std::nullopt;
}

}  // namespace

CommunicationConfig ReadCommunicationConfig(const std::string& path) {
  CommunicationConfig config;
  if (std::error_code ignored; !std::filesystem::exists(path, ignored)) {
    return config;
  }
  const KvConfig::StoreContent store = KvConfig::ReadStore(path);
  if (!store.root) {
    Write(&ILogger::Error, "{}; using the defaults of section \"{}\"", store.error, kSection);
    return config;
  }
  const auto report = [&](const char* key, const Json::Value& found, const char* expected) {
    Write(&ILogger::Error, "{}", KvConfig::DescribeMismatch(path, kSection, key, found, expected));
  };

  if (const Json::Value& found = (*store.root)[kSection]; !found.isNull() && !found.isObject()) {
    report("", found, "an object");
  }
  const Json::Value& section = KvConfig::SectionOf(*store.root, kSection);
  if (const Json::Value& value = section["SocketDirectory"]; !value.isNull()) {
    if (value.isString() && value.asString().starts_with('/')) {
      config.socketDirectory = value.asString();
    } else {
      report("SocketDirectory", value, "an absolute path");
    }
  }
  if (const Json::Value& value = section["AllowedUsers"]; value.isArray()) {
    for (const Json::Value& user : value) {
      const auto id = user.isString() ? UserId(user.asString()) : std::nullopt;
      if (id) {
        config.allowedUsers.push_back(*id);
      } else {
        report("AllowedUsers", user, "the name or number of a user, as text");
      }
    }
  } else if (!value.isNull()) {
    report("AllowedUsers", value, "a list of users");
  }
  if (const Json::Value& value = section["MaxConnections"]; !value.isNull()) {
    if (value.isUInt() && value.asUInt() >= 1 && value.asUInt() <= 1024) {
      config.maxConnections = value.asUInt();
    } else {
      report("MaxConnections", value, "a number from 1 to 1024");
    }
  }
  return config;
}

}  // namespace Rpc
