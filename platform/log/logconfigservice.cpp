#include "platform/log/logconfigservice.h"

#include <fmt/format.h>

#include <string>

#include "platform/log/log.h"
#include "platform/rpc/interfaces/logconfig.h"

namespace Log {
namespace {

ipc::MResult Illegal(const std::string& text) {
  ipc::MResult result;
  result.set_result(ipc::EResultIllegal);
  result.set_text(text);
  return result;
}

class CLogConfigService : public ILogConfig {
 public:
  ipc::MResult SetLogConfig(const ipc::MLogConfig& config) override {
    if (!config.has_level() && !config.has_console()) {
      return Illegal("neither level nor console is set");
    }
    if (config.has_level()) {
      if (!ipc::ELogLevel_IsValid(config.level())) {
        return Illegal(
            fmt::format("level: there is no level {}", static_cast<int>(config.level())));
      }
      SetLogLevel(static_cast<ELogLevel>(config.level()));
    }
    if (config.has_console()) {
      EnableConsoleLogging(config.console());
    }
    return {};
  }

  ipc::MLogConfig GetLogConfig() override {
    ipc::MLogConfig config;
    config.set_level(static_cast<ipc::ELogLevel>(GetLogLevel()));
    config.set_console(mConsoleLoggingEnabled.load(std::memory_order_relaxed));
    return config;
  }
};

}  // namespace

std::shared_ptr<ILogConfig> CreateLogConfigService() {
  return std::make_shared<CLogConfigService>();
}

}  // namespace Log
