#include <gmock/gmock.h>

#include "tools/feedbackctl/lampexplanation.h"

namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;

using Errors = std::vector<SLampFacts::SError>;

constexpr int kCharging = 6;
constexpr int kChanging = 10;

TEST(AnExplanationOfTheLamp, NamesTheWinnerAndWhatDoesNotFit) {
  const Errors ppThenRelay{{1003, "Pp"}, {1001, "Relay"}};
  const Errors cpLow{{1004, "CpLow"}};
  const auto enabled = ipc::EStateEnabled;
  const struct {
    const char* meaning;
    SLampFacts facts;
    const char* winner;
    const char* wants;
    const char* note;  // part of it; empty for none
    // clang-format off
  } kCases[] = {
      {"the state",           {"Blue/Pulsating", 9s,    enabled,                   Errors(),    kCharging},        "connector", "Blue/Pulsating", ""},
      {"a newer state",       {"Green/On",       9s,    enabled,                   Errors(),    42},               "connector", "Green/On",       ""},
      {"an error",            {"Red/Blink3",     9s,    enabled,                   cpLow,       kCharging},        "error",     "Red/Blink3",     ""},
      {"the oldest error",    {"Red/Blink1",     9s,    enabled,                   ppThenRelay, kCharging},        "error",     "Red/Blink1",     ""},
      {"disabled",            {"Yellow/On",      9s,    ipc::EStateDisabled,       cpLow,       kCharging},        "disabled",  "Yellow/On",      ""},
      {"not installed",       {"Yellow/On",      9s,    enabled,                   Errors(),    kCharging, false}, "disabled",  "Yellow/On",      ""},
      {"both",                {"Red/Blink3",     9s,    enabled,                   cpLow,       kCharging, false}, "error",     "Red/Blink3",     ""},
      {"an event",            {"Red/Flashing",   900ms, enabled,                   cpLow,       kCharging},        "event",     "Red/Flashing",   ""},
      {"a long event",        {"White/Flashing", 5s,    enabled,                   Errors(),    kCharging},        "event",     "White/Flashing", ""},
      {"a past event",        {"Green/Flashing", 5s,    enabled,                   Errors(),    kCharging},        "connector", "Blue/Pulsating", "asked for again"},
      {"a past event stays",  {"Green/Flashing", 5s,    enabled,                   Errors(),    kChanging},        "",          "",               "keeps what it showed"},
      {"the start",           {{},               0ms,   ipc::EStateUninitialized,  Errors(),    kCharging},        "disabled",  "Yellow/On",      "nothing was reported"},
      {"an error unheard",    {"Blue/Pulsating", 9s,    enabled,                   cpLow,       kCharging},        "error",     "Red/Blink3",     "began while the daemon was not Enabled"},
      {"an end unheard",      {"Red/Blink3",     9s,    enabled,                   Errors(),    kCharging},        "connector", "Blue/Pulsating", "ended while the daemon was not Enabled"},
      {"heard otherwise",     {"Red/Blink2",     9s,    enabled,                   ppThenRelay, kCharging},        "error",     "Red/Blink1",     "heard first"},
      {"an error comes back", {"Red/Blink3",     9s,    ipc::EStateDisabled,       cpLow,       kCharging},        "disabled",  "Yellow/On",      "comes back to a disabled lamp"},
      {"on its way",          {"Green/On",       100ms, enabled,                   Errors(),    kCharging},        "connector", "Blue/Pulsating", "look again"},
      {"no state heard",      {"Yellow/On",      9s,    enabled,                   Errors(),    kCharging},        "connector", "Blue/Pulsating", "InstallationComplete"},
      {"no diagnostics",      {{},               0ms,   enabled,                   {},          kCharging},        "connector", "Blue/Pulsating", "neither the report nor the errors"},
      {"nobody to ask",       {"Green/On",       9s,    {},                        {},          {}},               "",          "",               "keeps what it showed"},
  };
  // clang-format on
  for (const auto& [meaning, facts, winner, wants, note] : kCases) {
    SCOPED_TRACE(meaning);
    const auto explanation = ExplainLamp(facts);
    EXPECT_EQ(explanation.winner, winner);
    for (const auto& source : explanation.sources) {
      if (source.name == winner) {
        EXPECT_EQ(source.wants, wants);
      }
    }
    if (explanation.fits) {
      EXPECT_EQ(*explanation.fits, facts.reported.value_or("Yellow/On") == wants);
    } else {
      EXPECT_TRUE(!facts.errors || *winner == '\0');
    }
    if (*note == '\0') {
      EXPECT_THAT(explanation.notes, IsEmpty());
    } else {
      EXPECT_THAT(explanation.notes, Contains(HasSubstr(note)));
    }
  }
}

}  // namespace
