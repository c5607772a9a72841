#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <functional>

#include "virtualcharger/scenario/transcript.h"

namespace {

using testing::HasSubstr;
using testing::Not;

const SView kCharging{.time = std::chrono::milliseconds(1204),
                      .state = "enabled",
                      .lamp = {"Blue", "Pulsating"},
                      .brightness = "76%",
                      .levels = {0, 0, 760},
                      .patterns = {"0 0 0 0", "", "1000 2500 0 2500"},
                      .ledState = "Blue/Pulsating",
                      .display = "70%",
                      .beeps = 2};

std::string Written(bool colours, const std::function<void(CTranscript&)>& write,
                    std::size_t width = 1000) {
  char* text = nullptr;
  std::size_t size = 0;
  std::FILE* file = open_memstream(&text, &size);
  CTranscript transcript(file, {colours, colours, width});
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
            "  time step                           state            lamp              at LED state"
            "        disp beeps pattern\n"
            " 1.204 connector charging             enabled     lit  blue pulsating   76% "
            "Blue/Pulsating    70%     2 b 1000 2500 0 2500\n");
}

TEST(ATranscript, FitsIntoATerminalOf120Columns) {
  auto widest = kCharging;
  widest.state = "uninitialized";
  widest.lamp = {"Yellow", "Pulsating"};
  widest.patterns = {std::string(60, '1'), std::string(60, '1'), "5 0 5 0"};
  widest.levels = {1, 1, 1};
  const auto text = Written(
      false,
      [&](CTranscript& transcript) {
        transcript.Step("expect written red min_pattern_brightness \"0\"", widest);
      },
      120);
  EXPECT_THAT(text, HasSubstr(" expect written red min_patter… uninitiali… lit "));
  EXPECT_THAT(text, testing::EndsWith(" rg 111111111111…\n"));
  const auto continuations = std::ranges::count_if(
      text, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; });
  EXPECT_EQ(text.size() - static_cast<std::size_t>(continuations), 121U) << "with the line end";
}

TEST(ATranscript, NamesEachPatternThatIsLitOnce) {
  const auto step = [](SView view) {
    return Written(false, [&](CTranscript& transcript) { transcript.Step("mark", view); });
  };
  auto view = kCharging;
  view.levels = {5, 5, 5};
  view.patterns = {"1 0 1 0", "2 0 2 0", "1 0 1 0"};
  EXPECT_THAT(step(view), HasSubstr(" rb 1 0 1 0 | g 2 0 2 0\n"));
  view.levels = {0, 0, 0};
  EXPECT_THAT(step(view), testing::EndsWith(" -\n"));
}

TEST(ATranscript, DoesNotRepeatTheRowForAStepThatOnlyLooks) {
  const auto text = Written(false, [](CTranscript& transcript) {
    transcript.Step("connector charging", kCharging);
    transcript.Step("expect lamp blue pulsating", kCharging);
    transcript.Step("connector charging", kCharging);
  });
  EXPECT_THAT(text, HasSubstr("\n 1.204   expect lamp blue pulsating: yes\n 1.204 connector "));
}

TEST(ATranscript, ShowsTheLightItselfWhereThereAreColours) {
  const auto text =
      Written(true, [](CTranscript& transcript) { transcript.Step("mark", kCharging); });
  EXPECT_THAT(text, HasSubstr("\x1b[48;2;0;0;"));
  EXPECT_THAT(text, Not(HasSubstr("lit")));
}

TEST(ATranscript, DrawsWhatWaitsInPlaceUntilTheNextLineComes) {
  const auto wait = [](CTranscript& transcript) {
    for (const int time : {1000, 1040, 1100}) {
      transcript.Progress("expect lamp red on", std::chrono::milliseconds(time), "seen: green on");
    }
    transcript.Line("done\n");
  };
  EXPECT_EQ(Written(true, wait),
            "   1.0   expect lamp red on   seen: green on\r\x1b[K"
            "   1.1   expect lamp red on   seen: green on\r\x1b[Kdone\n");
  EXPECT_THAT(Written(true, wait, 20), testing::StartsWith("   1.0   expect la\u2026\r"));
  EXPECT_EQ(Written(false, wait), "done\n");
}

TEST(ATranscript, SaysNoToAStepThatFailed) {
  const auto text = Written(false, [](CTranscript& transcript) {
    transcript.Step("mark", kCharging);
    transcript.FailedStep("expect lamp red on", kCharging);
  });
  EXPECT_THAT(text, HasSubstr("\n 1.204   expect lamp red on: no\n"));
}

TEST(ATranscript, TellsADarkLampInAWord) {
  auto dark = kCharging;
  dark.lamp = {"", "Off"};
  dark.levels = {0, 0, 0};
  EXPECT_THAT(Written(false, [&](CTranscript& transcript) { transcript.Step("mark", dark); }),
              HasSubstr(" dark off "));
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
