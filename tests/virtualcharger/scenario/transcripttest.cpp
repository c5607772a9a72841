#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>

#include "virtualcharger/scenario/transcript.h"

namespace {

using testing::HasSubstr;
using testing::Not;

const SView kCharging{std::chrono::milliseconds(1204),
                      {"Blue", "Pulsating"},
                      {0, 0, 1000},
                      "Blue/Pulsating",
                      {"0 0 0 0", "", "1000 2500 0 2500"}};

std::string Written(bool colours, const std::function<void(CTranscript&)>& write,
                    std::size_t width = 1000) {
  char* text = nullptr;
  std::size_t size = 0;
  std::FILE* file = open_memstream(&text, &size);
  CTranscript transcript(file, colours, width);
  write(transcript);
  std::fclose(file);
  std::string written(text, size);
  std::free(text);
  return written;
}

TEST(ATranscript, HasItsColumnsUnderTheirNames) {
  const auto text = Written(false, [](CTranscript& transcript) {
    transcript.Header();
    transcript.Step("connector charging", kCharging);
  });
  EXPECT_EQ(text,
            "  time step                                  lamp             LED state        "
            "red          |green        |blue\n"
            " 1.204 connector charging               lit  blue pulsating   Blue/Pulsating   "
            "0 0 0 0      |-            |1000 2500 0 2500\n");
}

TEST(ATranscript, DoesNotRepeatTheRowForAStepThatOnlyLooks) {
  const auto text = Written(false, [](CTranscript& transcript) {
    transcript.Step("connector charging", kCharging);
    transcript.Step("expect lamp blue pulsating", kCharging);
    transcript.Step("connector charging", kCharging);
  });
  EXPECT_THAT(text, HasSubstr("\n 1.204   expect lamp blue pulsating: yes\n 1.204 connector "));
}

TEST(ATranscript, CutsTheLongestPatternToTheLinesWidth) {
  auto blinking = kCharging;
  blinking.patterns = {std::string(60, '1'), "0 0 0 0", std::string(20, '2')};
  const auto step = [&](CTranscript& transcript) { transcript.Step("mark", blinking); };
  EXPECT_THAT(Written(false, step, 120),
              HasSubstr(std::string(12, '1') + "…|0 0 0 0      |" + std::string(12, '2') + "…\n"));
}

TEST(ATranscript, ShowsTheLightItselfWhereThereAreColours) {
  const auto text =
      Written(true, [](CTranscript& transcript) { transcript.Step("mark", kCharging); });
  EXPECT_THAT(text, HasSubstr("\x1b[48;2;0;0;255m"));
  EXPECT_THAT(text, Not(HasSubstr("lit")));
}

TEST(ATranscript, TellsADarkLampInAWord) {
  auto dark = kCharging;
  dark.lamp = {"", "Off"};
  dark.levels = {0, 0, 0};
  EXPECT_THAT(Written(false, [&](CTranscript& transcript) { transcript.Step("mark", dark); }),
              HasSubstr("dark off "));
}

TEST(ATranscript, KeepsALongStepInItsColumn) {
  const auto text = Written(false, [](CTranscript& transcript) {
    transcript.Step("expect written red min_pattern_brightness \"0\"", kCharging);
  });
  EXPECT_THAT(text, HasSubstr(" expect written red min_pattern_… lit "));
}

TEST(ATranscript, LetsASayingSpeakForItself) {
  EXPECT_EQ(Written(false,
                    [](CTranscript& transcript) {
                      transcript.Step("say A car is plugged in", kCharging);
                    }),
            "A car is plugged in\n");
}

TEST(ATranscript, SetsTheReasonsOfAFailureIn) {
  EXPECT_EQ(Written(false,
                    [](CTranscript& transcript) {
                      transcript.Failure("FAILED  here", "expected: a\nseen:     b");
                    }),
            "FAILED  here\n  expected: a\n  seen:     b\n");
}

}  // namespace
