#include "src/kvlogger.h"

#include "platform/log/log.h"

namespace Rpc {

void KvLogger::Critical(const std::string& message) {
  LOG(Critical, "[RPC] {}", message);
}
void KvLogger::Error(const std::string& message) {
  LOG(Error, "[RPC] {}", message);
}
void KvLogger::Warning(const std::string& message) {
  LOG(Warning, "[RPC] {}", message);
}
void KvLogger::Info(const std::string& message) {
  LOG(Info, "[RPC] {}", message);
}
void KvLogger::Debug(const std::string& message) {
  LOG(Debug, "[RPC] {}", message);
}
void KvLogger::Trace(const std::string& message) {
  LOG(Trace, "[RPC] {}", message);
}

}  // namespace Rpc
