#include <fmt/format.h>
#include <gmock/gmock.h>
#include <json/json.h>

#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include "src/components/feedbackconfig.h"
#include "tests/support/logcapture.h"
#include "utils/settingscatalogue.h"

namespace {

using testing::HasSubstr;

TEST(AFeedbackConfig, ClampsNumbers) {
  const CFeedbackConfig config;
  const struct {
    int value, intensity, volume;
  } cases[] = {{-5, 0, 0}, {-1, 0, 0},    {0, 0, 0},     {4, 4, 4},
               {5, 5, 4},  {100, 100, 4}, {101, 100, 4}, {150, 100, 4}};
  for (const auto& each : cases) {
    EXPECT_EQ(config.LimitLedIntensity(each.value), each.intensity);
    EXPECT_EQ(config.LimitBuzzerVolume(each.value), each.volume);
  }
}

TEST(AFeedbackConfig, WarnsOfAModeThatItDoesNotKnow) {
  const LogCapture log;
  const CFeedbackConfig config;
  for (const char* text : {"Auto", "auto"}) {
    EXPECT_EQ(config.ParseBrightnessMode(text), EBrightnessMode::Auto);
  }
  for (const char* text : {"Fixed", "fixed"}) {
    EXPECT_EQ(config.ParseBrightnessMode(text), EBrightnessMode::Fixed);
  }
  EXPECT_THAT(log.Lines(), testing::IsEmpty());
  for (const std::string text : {"", "AUTO", "FIXED", "auto "}) {
    EXPECT_EQ(config.ParseBrightnessMode(text), EBrightnessMode::Fixed);
    EXPECT_EQ(log.Lines().back(),
              (LogCapture::Line{Log::ELogLevel::EWarning,
                                "(src/components/feedbackconfig:33) Unknown brightness mode \"" +
                                    text + "\", using Fixed"}));
  }
  EXPECT_EQ(log.Lines().size(), 4U);
}

TEST(TheConfigurationDocument, ShowsAStoreWithEveryKeyAndItsTypeAndDefault) {
  std::ifstream file(SOURCE_DIRECTORY "/docs/configuration.md");
  const std::string document(std::istreambuf_iterator<char>(file), {});
  Json::Value example;
  std::istringstream(document.substr(document.find("```json\n") + 8)) >> example;
  for (const auto& setting : kSettings) {
    const Json::Value& value = example[std::string(setting.section)][std::string(setting.key)];
    const bool isNumber = setting.type == ESettingType::EInteger;
    const bool isBool = setting.type == ESettingType::EBool;
    const auto type = isNumber ? "integer" : isBool ? "boolean" : "text";
    EXPECT_TRUE(isNumber ? value.isInt()
                : isBool ? value.isBool()
                         : value.isString())
        << setting.key;
    const auto defaultText = isNumber || isBool ? setting.defaultText : "empty";
    EXPECT_THAT(document,
                HasSubstr(fmt::format("| `{}` | {} | {} |", setting.key, type, defaultText)));
  }
}

}  // namespace
