#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/diagnostics/diagnosticscommclient.h"
#include "tests/support/fakediagnostics.h"
#include "tests/support/manualclock.h"
#include "utils/reduceddiagnosticssignal.h"
#include "utils/signalcatalogue.h"

namespace {

using testing::ElementsAre;
using namespace std::chrono_literals;

class AReducedSignal : public testing::Test {
 protected:
  AReducedSignal() { CDiagnosticsCommClient::Initialize(mDiagnostics); }
  ~AReducedSignal() override { CDiagnosticsCommClient::Terminate(); }

  CReducedDiagnosticsSignal<float> Signal(
      std::optional<float> threshold,
      std::optional<std::chrono::milliseconds> resendInterval = std::nullopt) {
    return {&Signals::LightIntensity, ipc::EInstanceTypeAll, threshold, resendInterval, mClock};
  }

  std::vector<float> Sent() const {
    std::vector<float> values;
    for (const auto& signal : mDiagnostics->Sent()) {
      EXPECT_EQ(signal.identifier(), ipc::ESignalIdentifierLightIntensity);
      EXPECT_EQ(signal.data_size(), 1);
      values.push_back(signal.data(0).float_value());
    }
    return values;
  }

  const std::shared_ptr<CFakeDiagnostics> mDiagnostics = std::make_shared<CFakeDiagnostics>();
  const std::shared_ptr<ManualClock> mClock = std::make_shared<ManualClock>();
};

TEST_F(AReducedSignal, SendsOnlyWhatDiffersFromTheLastSentValueByTheThreshold) {
  struct SCase {
    float threshold;
    std::vector<std::uint32_t> measured;
    std::vector<float> sent;
  };
  // The first value is compared with the default, -1.
  const SCase cases[] = {
      {100.0F, {50, 98, 99, 250, 300, 149}, {99, 250, 149}},
      {100000.0F, {99998, 99999, 100000}, {99999}},
      {100.0F, {0, 1, 2}, {}},
  };
  for (const auto& [threshold, measured, sent] : cases) {
    const auto before = Sent().size();
    auto signal = Signal(threshold);
    for (const auto value : measured) {
      signal.Send(value);
    }
    auto all = Sent();
    all.erase(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(before));
    EXPECT_EQ(all, sent) << threshold;
  }
}

TEST_F(AReducedSignal, SendsEveryValueWithoutThresholdAndInterval) {
  auto signal = Signal(std::nullopt);
  signal.Send(7);
  signal.Send(7);
  EXPECT_THAT(Sent(), ElementsAre(7, 7));
}

TEST_F(AReducedSignal, SendsAnInsignificantValueOnceItsIntervalIsOver) {
  auto signal = Signal(1000.0F, 5s);
  signal.Send(1);  // the last time counts from the clock's epoch
  mClock->Advance(5s);
  signal.Send(2);
  EXPECT_THAT(Sent(), ElementsAre(1));
  mClock->Advance(1ns);
  signal.Send(3);
  EXPECT_THAT(Sent(), ElementsAre(1, 3));
}

TEST_F(AReducedSignal, StartsTheIntervalAnewWithASignificantValue) {
  auto signal = Signal(100.0F, 5s);
  signal.Send(1);
  mClock->Advance(4s);
  signal.Send(500);
  mClock->Advance(4s);
  signal.Send(501);
  EXPECT_THAT(Sent(), ElementsAre(1, 500));
}

TEST_F(AReducedSignal, GoesByTheIntervalAloneWhereThereIsNoThreshold) {
  auto signal = Signal(std::nullopt, 5s);
  signal.Send(1);
  signal.Send(1000000);
  EXPECT_THAT(Sent(), ElementsAre(1));
}

TEST_F(AReducedSignal, TakesAValueAsSentThatCouldNotBeSent) {
  auto signal = Signal(100.0F);
  mDiagnostics->Fail("down");
  EXPECT_THROW(signal.Send(200), Rpc::CommunicationException);
  mDiagnostics->Recover();
  signal.Send(250);
  EXPECT_THAT(Sent(), ElementsAre());
  signal.Send(300);
  EXPECT_THAT(Sent(), ElementsAre(300));
}

TEST_F(AReducedSignal, CannotJudgeAChangeWithoutAThreshold) {
  EXPECT_THROW(Signal(std::nullopt).IsBelowThreshold(1, 2), std::bad_optional_access);
}

}  // namespace
