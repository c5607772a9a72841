#include "tools/feedbackctl/settingtext.h"

#include <fmt/format.h>

#include <memory>

#include "utils/words.h"

std::string JsonText(const Json::Value& value) {
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  builder["emitUTF8"] = true;
  return Json::writeString(builder, value);
}

std::string ShownText(const Json::Value& value) {
  return value.isString() ? value.asString() : JsonText(value);
}

Json::Value ParseValue(const std::string& text) {
  Json::CharReaderBuilder builder;
  Json::CharReaderBuilder::strictMode(&builder.settings_);
  builder["strictRoot"] = false;
  const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  Json::Value value;
  return reader->parse(text.data(), text.data() + text.size(), &value, nullptr) ? value
                                                                                : Json::Value(text);
}

Json::Value DefaultOf(const CSettingDescription& setting) {
  return ParseValue(std::string(setting.defaultText));
}

bool Fits(const CSettingDescription& setting, const Json::Value& value) {
  if (value.isNull()) {
    return true;
  }
  switch (setting.type) {
    case ESettingType::EBool:
      return value.isBool();
    case ESettingType::EInteger:
      // json's own isInt also takes 4.0, which the daemon does not.
      return value.type() != Json::realValue && value.isInt() && value.asInt() >= setting.least &&
             value.asInt() <= setting.most;
    case ESettingType::EBrightnessMode:
      return value.isString() &&
             std::ranges::find(kBrightnessModes, value.asString()) != kBrightnessModes.end();
  }
  return false;
}

std::string SettingLines(std::string_view section) {
  std::string text;
  for (const auto& setting : kSettings) {
    if (setting.section == section) {
      text += fmt::format("  {:<21} {:<24}  default {:<6} {}\n", setting.key, setting.expected,
                          ShownText(DefaultOf(setting)), setting.meaning);
    }
  }
  return text;
}

std::vector<std::string> SettingKeys(std::string_view section) {
  std::vector<std::string> keys;
  for (const auto& setting : kSettings) {
    if (setting.section == section) {
      keys.emplace_back(setting.key);
    }
  }
  return keys;
}

std::string HintOfKey(std::string_view section, std::string_view key) {
  return Hint(key, SettingKeys(section));
}
