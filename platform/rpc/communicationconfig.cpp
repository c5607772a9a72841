#include "platform/rpc/communicationconfig.h"

#include <json/json.h>
#include <pwd.h>

#include <charconv>
#include <fstream>
#include <optional>

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

std::string Compact(const Json::Value& value) {
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  return Json::writeString(builder, value);
}

class CSectionReader {
 public:
  CSectionReader(std::string path, const Json::Value& section) : mPath(std::move(path)) {
    if (section.isNull() || section.isObject()) {
      mSection = section;
    } else {
      Report("", section, "an object");
    }
  }

  const Json::Value& operator[](const char* key) const { return mSection[key]; }

  void Report(const std::string& key, const Json::Value& found, const char* expected) const {
    Write(&ILogger::Error, "{}: section \"{}\"{}: found {}, expected {}; using the default", mPath,
          kSection, key.empty() ? "" : ", key \"" + key + "\"", Compact(found), expected);
  }

 private:
  const std::string mPath;
  Json::Value mSection{Json::objectValue};
};

}  // namespace

CommunicationConfig ReadCommunicationConfig(const std::string& path) {
  CommunicationConfig config;
  std::ifstream file(path);
  if (!file) {
    return config;
  }
  Json::CharReaderBuilder builder;
  Json::CharReaderBuilder::strictMode(&builder.settings_);
  Json::Value root;
  std::string errors;
  bool parsed = false;
  try {
    parsed = Json::parseFromStream(builder, file, &root, &errors) && root.isObject();
  } catch (const Json::Exception& exception) {
    errors = exception.what();
  }
  if (!parsed) {
    Write(&ILogger::Error, "{}: not a valid store ({}); using the defaults of section \"{}\"", path,
          errors, kSection);
    return config;
  }

  const CSectionReader section(path, root[kSection]);
  if (const Json::Value& value = section["SocketDirectory"]; !value.isNull()) {
    if (value.isString() && value.asString().starts_with('/')) {
      config.socketDirectory = value.asString();
    } else {
      section.Report("SocketDirectory", value, "an absolute path");
    }
  }
  if (const Json::Value& value = section["AllowedUsers"]; value.isArray()) {
    for (const Json::Value& user : value) {
      const auto id = user.isString() ? UserId(user.asString()) : std::nullopt;
      if (id) {
        config.allowedUsers.push_back(*id);
      } else {
        section.Report("AllowedUsers", user, "the name or number of a user, as text");
      }
    }
  } else if (!value.isNull()) {
    section.Report("AllowedUsers", value, "a list of users");
  }
  if (const Json::Value& value = section["MaxConnections"]; !value.isNull()) {
    if (value.isUInt() && value.asUInt() >= 1 && value.asUInt() <= 1024) {
      config.maxConnections = value.asUInt();
    } else {
      section.Report("MaxConnections", value, "a number from 1 to 1024");
    }
  }
  return config;
}

}  // namespace Rpc
