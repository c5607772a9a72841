#include <csignal>
#include <exception>
#include <memory>

#include "platform/log/log.h"
#include "platform/rpc/grpcbackend.h"
#include "src/commandline.h"
#include "src/feedback.h"
#include "src/kvlogger.h"
#include "src/terminatehandler.h"

namespace {

// Every thread inherits this, so that SIGINT waits for the one that takes it.
void BlockInterrupt() {
  sigset_t interrupt;
  sigemptyset(&interrupt);
  sigaddset(&interrupt, SIGINT);
  pthread_sigmask(SIG_BLOCK, &interrupt, nullptr);
}

}  // namespace

int main(int argumentCount, char* arguments[]) {
  Log::Init("Feedback", Log::ELogLevel::EInfo);
  std::set_terminate(HandleTerminate);
  const auto commandLine = ParseCommandLine(argumentCount, arguments);
  if (!commandLine) {
    return 1;
  }
  // A console whose reader has gone must not end the process: the log deals with failing writes.
  std::signal(SIGPIPE, SIG_IGN);
  BlockInterrupt();
  GrpcBackend::SetLogger(std::make_shared<Rpc::KvLogger>());
  CFeedback feedback(commandLine->root);
  feedback.Run();
  return 0;
}
