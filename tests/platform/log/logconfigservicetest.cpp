#include <gtest/gtest.h>

#include <optional>

#include "platform/log/logconfigservice.h"
#include "platform/rpc/interfaces/logconfig.h"
#include "tests/support/logcapture.h"

namespace {

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

TEST(ALogConfigService, ChangesWhatAnUnderstoodRequestSetsAndNothingElse) {
  // Keeps the changes from the rest of the program.
  const LogCapture log(Log::ELogLevel::EInfo);
  const auto service = Log::CreateLogConfigService();
  const struct {
    ipc::MLogConfig mRequest;
    const char* mRefusal;
    int mLevel;
    bool mConsole;
  } cases[] = {
      {Config({}, {}), "neither level nor console is set", ipc::ELogLevelInfo, false},
      {Config(7, true), "level: there is no level 7", ipc::ELogLevelInfo, false},
      {Config(-1, true), "level: there is no level -1", ipc::ELogLevelInfo, false},
      {Config(ipc::ELogLevelTrace, {}), "", ipc::ELogLevelTrace, false},
      {Config({}, true), "", ipc::ELogLevelTrace, true},
      {Config(ipc::ELogLevelOff, false), "", ipc::ELogLevelOff, false},
      {Config(ipc::ELogLevelError, true), "", ipc::ELogLevelError, true},
  };
  for (const auto& [request, refusal, level, console] : cases) {
    SCOPED_TRACE(request.ShortDebugString());
    const auto result = service->SetLogConfig(request);
    EXPECT_EQ(result.result(), *refusal == '\0' ? ipc::EResultOk : ipc::EResultIllegal);
    EXPECT_EQ(result.text(), refusal);
    EXPECT_EQ(service->GetLogConfig().SerializeAsString(),
              Config(level, console).SerializeAsString());
  }
  LOG(Warning, "dropped");
  LOG(Error, "kept");
  EXPECT_EQ(log.Lines().size(), 1u);
  EXPECT_TRUE(Log::mConsoleLoggingEnabled);
}

}  // namespace
