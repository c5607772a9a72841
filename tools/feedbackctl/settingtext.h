// Settings as text: how values are shown, understood and judged.
#pragma once

#include <json/json.h>

#include <string>
#include <string_view>
#include <vector>

#include "utils/settingscatalogue.h"

// On one line.
std::string JsonText(const Json::Value& value);

// For people: a text without its quotes.
std::string ShownText(const Json::Value& value);

// JSON where it is, else the text itself: 4, true, Fixed.
Json::Value ParseValue(const std::string& text);

Json::Value DefaultOf(const CSettingDescription& setting);

// Null fits: the daemon then takes the default.
bool Fits(const CSettingDescription& setting, const Json::Value& value);

// The settings of a section with what fits and their defaults, one a line.
std::string SettingLines(std::string_view section);

std::vector<std::string> SettingKeys(std::string_view section);

// "; did you mean "KEY"?" for a key of the section that is mistyped, else nothing.
std::string HintOfKey(std::string_view section, std::string_view key);
