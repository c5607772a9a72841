#include <csignal>
#include <exception>
#include <memory>

#include "platform/log/log.h"
#include "platform/rpc/grpcbackend.h"
#include "src/commandline.h"
#include "src/feedback.h"
#include "src/interrupt.h"
#include "src/kvlogger.h"
#include "src/terminatehandler.h"

int main(int argumentCount, char* arguments[]) {
  Log::Init("Feedback", Log::ELogLevel::EInfo);
  std::set_terminate(HandleTerminate);
  const auto commandLine = ParseCommandLine(argumentCount, arguments);
  if (!commandLine) {
    return 1;
  }
  Interrupt::StartThread();
  // A console whose reader has gone must not end the process: the log deals with failing writes.
  std::signal(SIGPIPE, SIG_IGN);
  GrpcBackend::SetLogger(std::make_shared<Rpc::KvLogger>());
  CFeedback feedback(commandLine->root);
  feedback.Run();
  return 0;
}
