// What the hardware classes have around them: a clock in the test's hand, diagnostics and the log.
#pragma once

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/diagnostics/diagnosticscommclient.h"
#include "tests/support/fakediagnostics.h"
#include "tests/support/logcapture.h"
#include "tests/support/manualclock.h"

class CHalFixture : public testing::Test {
 protected:
  CHalFixture() { CDiagnosticsCommClient::Initialize(mDiagnostics); }
  ~CHalFixture() override { CDiagnosticsCommClient::Terminate(); }

  // The errors that were logged since the last time.
  std::vector<std::string> TakeErrors() {
    std::vector<std::string> texts;
    for (const auto& line : mLog.Lines()) {
      EXPECT_EQ(line.mLevel, Log::ELogLevel::EError);
      texts.push_back(line.mText);
    }
    mLog.Clear();
    return texts;
  }

  // The values that were sent, all of the one signal; 0 and 1 for false and true.
  std::vector<float> Reports(int identifier) const {
    std::vector<float> values;
    for (const auto& signal : mDiagnostics->Sent()) {
      EXPECT_EQ(signal.identifier(), identifier);
      EXPECT_GT(signal.timestamp().seconds(), 0);
      const auto& data = signal.data(0);
      values.push_back(data.has_bool_value() ? static_cast<float>(data.bool_value())
                                             : data.float_value());
    }
    return values;
  }

  LogCapture mLog{Log::ELogLevel::EWarning};
  const std::shared_ptr<CFakeDiagnostics> mDiagnostics = std::make_shared<CFakeDiagnostics>();
  const std::shared_ptr<ManualClock> mClock = std::make_shared<ManualClock>();
};
