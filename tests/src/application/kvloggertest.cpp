#include <gtest/gtest.h>

#include "src/kvlogger.h"
#include "tests/support/logcapture.h"

namespace {

TEST(TheRpcLogger, WritesEachMessageAtItsLevel) {
  const LogCapture log;
  Rpc::KvLogger logger;
  Rpc::ILogger& interface = logger;
  interface.Critical("abc");
  interface.Error("abc");
  interface.Warning("abc");
  interface.Info("abc");
  interface.Debug("abc");
  interface.Trace("abc {}");
  using enum Log::ELogLevel;
  EXPECT_EQ(log.Lines(), (std::vector<LogCapture::Line>{{ECritical, "[RPC] abc"},
                                                        {EError, "[RPC] abc"},
                                                        {EWarning, "[RPC] abc"},
                                                        {EInfo, "[RPC] abc"},
                                                        {EDebug, "[RPC] abc"},
                                                        {ETrace, "[RPC] abc {}"}}));
}

}  // namespace
