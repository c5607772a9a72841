// Command-line control over the daemon's local services.
#include <sys/ioctl.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <ctime>
#include <iostream>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/rpc/grpcbackend.h"
#include "tools/feedbackctl/commandline.h"

namespace {

// Shows the RPC layer's warnings, each once until something has gone well again: a broken store,
// for one, is read more than once.
class CWarnings : public Rpc::ILogger {
 public:
  void Critical(const std::string& message) override { Show(message); }
  void Error(const std::string& message) override { Show(message); }
  void Warning(const std::string& message) override { Show(message); }
  void Info(const std::string& /*message*/) override {
    const std::lock_guard lock(mMutex);
    mShown.clear();
  }
  void Debug(const std::string& /*message*/) override {}
  void Trace(const std::string& /*message*/) override {}

 private:
  void Show(const std::string& message) {
    const std::lock_guard lock(mMutex);
    if (mShown.insert(message).second) {
      std::cerr << "feedbackctl: " << message << std::endl;
    }
  }

  std::mutex mMutex;
  std::set<std::string> mShown;  // guarded by mMutex
};

// Blocks the signals for the calling thread and all that it starts later, so that they wait for the
// next look.
bool IsInterrupted(std::chrono::milliseconds patience) {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  const auto seconds = std::chrono::floor<std::chrono::seconds>(patience);
  timespec limit{};
  limit.tv_sec = seconds.count();
  limit.tv_nsec = std::chrono::nanoseconds(patience - seconds).count();
  return sigtimedwait(&signals, nullptr, &limit) > 0;
}

// Empty where the environment does not have it.
std::string_view Environment(const char* variable) {
  // NOLINTNEXTLINE(concurrency-mt-unsafe): nobody changes the environment
  const char* value = std::getenv(variable);
  return value == nullptr ? std::string_view() : value;
}

int Columns() {
  winsize size{};
  return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

}  // namespace

int main(int argumentCount, char* arguments[]) {
  // Who closes the pipe that is written to wants an end, with a message and not by a signal.
  std::signal(SIGPIPE, SIG_IGN);
  GrpcBackend::SetLogger(std::make_shared<CWarnings>());
  const auto kind = Environment("TERM");
  const bool isTerminal = isatty(STDOUT_FILENO) != 0 && !kind.empty() && kind != "dumb";
  CTool tool{std::cout, std::cerr, &IsInterrupted};
  if (isTerminal) {
    tool.columns = &Columns;
    tool.hasColours = Environment("NO_COLOR").empty();
  }
  return RunTool({arguments + 1, arguments + argumentCount}, tool);
}
