#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include "platform/kvconfig/kvconfig.h"
#include "src/components/feedbackconfig.h"
#include "tests/support/logcapture.h"
#include "tests/support/temporarydirectory.h"

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

TEST(TheConfigurationDocument, ShowsAStoreWithEveryKey) {
  std::ifstream file(SOURCE_DIRECTORY "/docs/configuration.md");
  const std::string document(std::istreambuf_iterator<char>(file), {});
  const size_t begin = document.find("```json\n") + 8;
  const TemporaryDirectory directory;
  KvConfig::SetStore(directory.WriteFile(
      "ovra.json", document.substr(begin, document.find("```", begin) - begin)));
  const auto fail = [](const std::string& error) { ADD_FAILURE() << error; };
  const auto open = [&](const char* section) {
    return std::unique_ptr<KvConfig::IReadOnlyConfig>(
        KvConfig::CreateReadOnly(section, fail, false));
  };
  const auto settings = open(Settings::kSection);
  const auto hardware = open(Settings::kHardwareSection);

  // Two defaults: a key that the example has gives the same with both.
  using namespace Settings;
  EXPECT_EQ(settings->GetString(kLedIntensityMode, "a"),
            settings->GetString(kLedIntensityMode, ""));
  for (const char* key : {kLedIntensityMin, kLedIntensityMax, kLedIntensityManual, kBuzzerVolume}) {
    EXPECT_EQ(settings->GetInt(key, -1), settings->GetInt(key, -2)) << key;
    EXPECT_THAT(document, HasSubstr("| `" + std::string(key) + "` | integer |"));
  }
  EXPECT_EQ(settings->GetBool(kInstallationComplete, true),
            settings->GetBool(kInstallationComplete, false));
  for (const char* key : {kHasLed, kHasMeterDisplay, kHasBuzzer}) {
    EXPECT_EQ(hardware->GetBool(key, true), hardware->GetBool(key, false)) << key;
    EXPECT_THAT(document, HasSubstr("| `" + std::string(key) + "` | boolean |"));
  }
}

}  // namespace
