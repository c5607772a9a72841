#include <gmock/gmock.h>

#include "platform/diagnostics/diagnosticscommclient.h"
#include "tests/support/fakediagnostics.h"
#include "tests/support/manualclock.h"
#include "utils/reduceddiagnosticssignal.h"
#include "utils/signalcatalogue.h"

namespace {

using namespace std::chrono_literals;
using Interval = std::optional<std::chrono::milliseconds>;

class AReducedSignal : public testing::Test {
 protected:
  AReducedSignal() { CDiagnosticsCommClient::Initialize(mDiagnostics); }
  ~AReducedSignal() override { CDiagnosticsCommClient::Terminate(); }

  CReducedDiagnosticsSignal<float> Signal(std::optional<float> threshold, Interval interval = {}) {
    return {&Signals::LightIntensity, ipc::EInstanceTypeAll, threshold, interval, mClock};
  }

  std::vector<float> Sent() const {
    std::vector<float> values;
    for (const auto& signal : mDiagnostics->Sent()) {
      EXPECT_EQ(signal.identifier(), ipc::ESignalIdentifierLightIntensity);
      values.push_back(signal.data(0).float_value());
    }
    return values;
  }

  const std::shared_ptr<CFakeDiagnostics> mDiagnostics = std::make_shared<CFakeDiagnostics>();
  const std::shared_ptr<ManualClock> mClock = std::make_shared<ManualClock>();
};

TEST_F(AReducedSignal, SendsWhatDiffersByTheThresholdOrComesAfterTheInterval) {
  const struct {
    const char* mName;
    std::optional<float> mThreshold;
    Interval mInterval;
    std::vector<std::pair<std::chrono::nanoseconds, std::uint32_t>> mMeasured;
    std::vector<float> mSent;
  } cases[] = {
      // clang-format off
      {"against the last sent value, first the default of -1", 100.0F, {},
       {{0s, 98}, {0s, 99}, {9h, 198}, {0s, 250}, {0s, 300}, {0s, 149}}, {99, 250, 149}},
      {"everything, with neither", {}, {}, {{0s, 7}, {0s, 7}}, {7, 7}},
      {"the first at once, then after the interval", 1000.0F, 5s,
       {{0s, 1}, {5s, 2}, {1ns, 3}}, {1, 3}},
      {"a significant value starts the interval anew", 100.0F, 5s,
       {{0s, 1}, {4s, 500}, {4s, 501}}, {1, 500}},
      {"the interval alone", {}, 5s, {{0s, 1}, {0s, 1000000}}, {1}},
      // clang-format on
  };
  for (const auto& [name, threshold, interval, measured, sent] : cases) {
    SCOPED_TRACE(name);
    const auto before = static_cast<std::ptrdiff_t>(Sent().size());
    auto signal = Signal(threshold, interval);
    for (const auto& [later, value] : measured) {
      mClock->Advance(later);
      signal.Send(value);
    }
    auto all = Sent();
    all.erase(all.begin(), all.begin() + before);
    EXPECT_EQ(all, sent);
  }
}

TEST_F(AReducedSignal, TakesAValueAsSentThatCouldNotBeSent) {
  auto signal = Signal(100.0F);
  mDiagnostics->Fail("down");
  EXPECT_THROW(signal.Send(200), Rpc::CommunicationException);
  mDiagnostics->Recover();
  signal.Send(250);
  signal.Send(300);
  EXPECT_THAT(Sent(), testing::ElementsAre(300));
}

TEST_F(AReducedSignal, CannotJudgeAChangeWithoutAThreshold) {
  EXPECT_THROW(Signal({}).IsBelowThreshold(1, 2), std::bad_optional_access);
}

}  // namespace
