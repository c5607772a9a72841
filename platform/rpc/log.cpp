#include "platform/rpc/log.h"

namespace Rpc {
namespace {

std::shared_ptr<ILogger>& Logger() {
  static std::shared_ptr<ILogger> logger;
  return logger;
}

}  // namespace

void SetLogger(std::shared_ptr<ILogger> logger) {
  Logger() = std::move(logger);
}

ILogger* CurrentLogger() {
  return Logger().get();
}

}  // namespace Rpc
