#include "virtualcharger/peers/peerprocess.h"

#include <fmt/format.h>
#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <exception>
#include <mutex>
#include <sstream>
#include <thread>
#include <vector>

#include "platform/rpc/logger.h"
#include "virtualcharger/peers/linebuffer.h"
#include "virtualcharger/peers/peer.h"

namespace {

// What goes wrong on the wire is a matter for whoever reads the peer's log file.
class CWarningsToStandardError : public Rpc::ILogger {
 public:
  void Critical(const std::string& message) override { Warning(message); }
  void Error(const std::string& message) override { Warning(message); }
  void Warning(const std::string& message) override { fmt::print(stderr, "{}\n", message); }
  void Info(const std::string&) override {}
  void Debug(const std::string&) override {}
  void Trace(const std::string&) override {}
};

// Blocked in every thread, so that only the descriptor tells.
int TerminationDescriptor() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  return signalfd(-1, &signals, SFD_CLOEXEC);
}

std::vector<std::string> Words(const std::string& line) {
  std::istringstream stream(line);
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(word);
  return words;
}

void Serve(IPeer& peer, int control, int termination, const PeerEvents& write) {
  CLineBuffer lines;
  pollfd inputs[] = {{control, POLLIN, 0}, {termination, POLLIN, 0}};
  for (;;) {
    if (poll(inputs, 2, -1) < 0 && errno == EINTR) continue;  // stopped and continued
    if (inputs[1].revents != 0 || !lines.ReadFrom(control)) return;
    while (const auto line = lines.Next()) {
      auto words = Words(*line);
      if (words.empty()) continue;
      const auto number = words.front();
      words.erase(words.begin());
      write("reply " + number + ' ' + peer.Execute(words));
    }
  }
}

}  // namespace

int RunPeer(const SPeerSettings& settings, int control) {
  const int termination = TerminationDescriptor();
  std::signal(SIGPIPE, SIG_IGN);
  std::mutex mutex;
  const auto write = [&](const std::string& text) {
    const auto line = text + '\n';
    const std::lock_guard lock(mutex);
    // A line that nobody takes any more is no loss: the reader's end ends this process.
    [[maybe_unused]] const auto written = ::write(control, line.data(), line.size());
  };

  const auto peer = MakePeer(settings.name, settings.connectorState, write);
  if (!peer) {
    fmt::print(stderr, "no such peer: {}\n", settings.name);
    return 2;
  }
  try {
    GrpcBackend::SetLogger(std::make_shared<CWarningsToStandardError>());
    AppCommunicationHost<GrpcBackend> host(settings.store);
    peer->Join(host);
    host.StartServices();
    std::thread server([&] { host.RunServer(); });
    std::thread notifications([&] { host.HandleClientNotifications(); });
    write("serving");
    Serve(*peer, control, termination, write);
    host.Stop();
    server.join();
    notifications.join();
  } catch (const std::exception& exception) {
    fmt::print(stderr, "{}: {}\n", settings.name, exception.what());
    return 1;
  }
  return 0;
}
