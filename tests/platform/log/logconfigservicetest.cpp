#include <gmock/gmock.h>

#include <optional>

#include "platform/log/logconfigservice.h"
#include "platform/rpc/interfaces/logconfig.h"
#include "tests/support/logcapture.h"

namespace {

using Log::ELogLevel;

ipc::MLogConfig Config(std::optional<int> level, std::optional<bool> console) {
  ipc::MLogConfig config;
  if (level) {
    config.set_level(static_cast<ipc::ELogLevel>(*level));
  }
  if (console) {
    config.set_console(*console);
  }
  return config;
}

class ALogConfigService : public testing::Test {
 protected:
  void ExpectReported(int level, bool console) {
    const auto reported = mService->GetLogConfig();
    EXPECT_EQ(reported.SerializeAsString(), Config(level, console).SerializeAsString());
  }

  // Keeps the changes from the rest of the program.
  LogCapture mLog{ELogLevel::EInfo};
  const std::shared_ptr<ILogConfig> mService = Log::CreateLogConfigService();
};

TEST_F(ALogConfigService, ChangesWhatARequestSetsAndNothingElse) {
  ExpectReported(ipc::ELogLevelInfo, false);
  const struct {
    ipc::MLogConfig mRequest;
    int mLevel;
    bool mConsole;
  } cases[] = {
      {Config(ipc::ELogLevelDebug, {}), ipc::ELogLevelDebug, false},
      {Config({}, true), ipc::ELogLevelDebug, true},
      {Config(ipc::ELogLevelTrace, {}), ipc::ELogLevelTrace, true},
      {Config(ipc::ELogLevelOff, false), ipc::ELogLevelOff, false},
      {Config(ipc::ELogLevelError, true), ipc::ELogLevelError, true},
  };
  for (const auto& [request, level, console] : cases) {
    const auto result = mService->SetLogConfig(request);
    EXPECT_EQ(result.result(), ipc::EResultOk);
    EXPECT_EQ(result.text(), "");
    ExpectReported(level, console);
  }
  LOG(Warning, "dropped");
  LOG(Error, "kept");
  EXPECT_EQ(mLog.Lines().size(), 1u);
  EXPECT_TRUE(Log::mConsoleLoggingEnabled);
}

TEST_F(ALogConfigService, RefusesWhatItDoesNotUnderstandAndChangesNothing) {
  const struct {
    ipc::MLogConfig mRequest;
    const char* mText;
  } cases[] = {
      {Config({}, {}), "neither level nor console is set"},
      {Config(7, true), "level: there is no level 7"},
      {Config(-1, true), "level: there is no level -1"},
  };
  for (const auto& [request, text] : cases) {
    const auto result = mService->SetLogConfig(request);
    EXPECT_EQ(result.result(), ipc::EResultIllegal);
    EXPECT_EQ(result.text(), text);
    ExpectReported(ipc::ELogLevelInfo, false);
  }
}

}  // namespace
