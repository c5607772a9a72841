// What CProcesses does with the processes.
#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <system_error>

#include "utils/signalcatalogue.h"
#include "virtualcharger/scenario/processes.h"

namespace {

using namespace std::chrono_literals;

constexpr auto kLimit = 10s;  // for what only a fault can delay
constexpr auto kStopLimit = 5s;
constexpr int kAppend = O_WRONLY | O_CREAT | O_APPEND;

// A file for a process's input or output; closed here when the process has it.
class CFile {
 public:
  CFile(const std::string& path, int flags)
      : mDescriptor(open(path.c_str(), flags | O_CLOEXEC, 0600)) {
    if (mDescriptor < 0) throw std::system_error(errno, std::generic_category(), path);
  }
  CFile(const CFile&) = delete;
  CFile& operator=(const CFile&) = delete;
  ~CFile() { close(mDescriptor); }

  int Get() const { return mDescriptor; }

 private:
  const int mDescriptor;
};

}  // namespace

Deed CProcesses::StartAll() {
  std::vector<Deed> peers;
  for (const auto& [name, process] : mProcesses) {
    if (name != kDaemon) peers.push_back(StartPeer(name));
  }
  return Then(All(std::move(peers)), [this](const std::string&) { return StartDaemon(); });
}

Deed CProcesses::StopAll() {
  for (auto& [name, process] : mProcesses) {
    if (process.status.frozen) Control(EProcessAction::Thaw, name);
  }
  // What only begins to run cannot end orderly yet.
  const auto end = [this](const std::string& name) {
    return Status(name).state == EProcessState::Starting ? Kill(name) : Stop(name);
  };
  return Then(Runs(kDaemon) ? end(kDaemon) : Done(), [this, end](const std::string&) {
    std::vector<Deed> peers;
    for (const auto& [name, process] : mProcesses) {
      if (process.link) peers.push_back(end(name));
    }
    return All(std::move(peers));
  });
}

Deed CProcesses::Control(EProcessAction action, const std::string& name) {
  auto& process = mProcesses.at(name);
  switch (action) {
    case EProcessAction::Start:
      return name == kDaemon ? StartDaemon() : StartPeer(name);
    case EProcessAction::Kill:
      return Kill(name);
    case EProcessAction::Stop:
      return Stop(name);
    case EProcessAction::Freeze:
      Unfrozen(name).Freeze();
      process.status.frozen = true;
      process.status.since = std::chrono::steady_clock::now();
      return Done();
    case EProcessAction::Thaw:
      if (!process.status.frozen) throw CStepFailure(name + " is not frozen");
      Running(name).Thaw();
      process.status.frozen = false;
      process.status.since = std::chrono::steady_clock::now();
      return Done();
  }
  return Done();
}

Deed CProcesses::Tell(const std::string& peer, const std::string& command) {
  Running(peer);
  const auto sent = mProcesses.at(peer).link->Send(command);
  const auto end = std::chrono::steady_clock::now() + kLimit;
  return [=, this]() -> std::optional<std::string> {
    if (sent->outcome) return sent->outcome;
    if (sent->lost) throw CStepFailure(peer + " has ended before it answered");
    if (std::chrono::steady_clock::now() < end) return std::nullopt;
    throw CStepFailure(
        fmt::format("{0} did not answer within {1} s{2}", peer, kLimit.count(),
                    Status(peer).frozen ? "; it is frozen: \"thaw " + peer + '"' : ""));
  };
}

CProcesses::SProcess& CProcesses::Ended(const std::string& name) {
  auto& process = mProcesses.at(name);
  if (Child(process) != nullptr) throw CStepFailure(name + " runs already");
  return process;
}

CChildProcess& CProcesses::Running(const std::string& name) {
  auto* child = Child(mProcesses.at(name));
  if (child == nullptr) {
    throw CStepFailure(fmt::format("{0} does not run; \"start {0}\" first", name));
  }
  return *child;
}

CChildProcess& CProcesses::Unfrozen(const std::string& name) {
  auto& child = Running(name);
  if (Status(name).frozen) {
    throw CStepFailure(fmt::format("{0} is frozen; \"thaw {0}\" first", name));
  }
  return child;
}

Deed CProcesses::StartPeer(const std::string& name) {
  auto& process = Ended(name);
  const CFile log(mRoot.Log(name), kAppend);
  process.link = std::make_unique<CPeerLink>(
      std::vector<std::string>{ThisProgram(), "--peer", name, "--store", mRoot.Store(), "--state",
                               std::to_string(mConnector.value)},
      log.Get(), [this, name](const std::string& kind, std::int64_t number, const auto& text) {
        TakeEvent(name, kind, number, text);
      });
  if (name == kMeter) {
    mDisplay.reset();
    mMeterAccepts = true;
  }
  return Started(name);
}

Deed CProcesses::StartDaemon() {
  const CFile log(mRoot.Log("feedback"), kAppend);
  const CFile nothing("/dev/null", O_RDONLY);
  // The light of the one before is not this one's.
  mSignals.erase(Signals::LedState.identifier);
  Ended(kDaemon).daemon = std::make_unique<CChildProcess>(
      std::vector<std::string>{mSettings.daemon, "-r", mRoot.Path() + '/'},
      CChildProcess::SStandard{nothing.Get(), log.Get(), log.Get()});
  return Started(kDaemon);
}

Deed CProcesses::Started(const std::string& name) {
  auto& process = mProcesses.at(name);
  process.asked = false;
  SetState(process, EProcessState::Starting);
  const auto ready = [name, &status = process.status] {
    if (status.state == EProcessState::Starting) return false;
    if (status.state == EProcessState::Running) return true;
    throw CStepFailure(fmt::format("{} ended while it began to serve: {}", name, status.detail));
  };
  return Until(ready, kLimit,
               name == kDaemon
                   ? fmt::format("the daemon and its peers did not find each other within {} s",
                                 kLimit.count())
                   : fmt::format("{} did not begin to serve within {} s", name, kLimit.count()));
}

Deed CProcesses::Stop(const std::string& name) {
  Unfrozen(name).Signal(name == kDaemon ? SIGINT : SIGTERM);
  auto& process = mProcesses.at(name);
  process.asked = true;
  auto ended =
      Until([&process] { return Child(process) == nullptr; }, kStopLimit,
            fmt::format("{} did not end within {} s of being asked to", name, kStopLimit.count()));
  return Then(std::move(ended), [=, this, &process](const std::string&) {
    if (process.status.detail != DescribeEnd(0)) {
      throw CStepFailure(fmt::format("{} was asked to end: {} instead of exit status 0", name,
                                     process.status.detail));
    }
    if (name != kDaemon) return Done();
    CheckSocketsAreGone();
    return Unsubscribed();
  });
}

Deed CProcesses::Kill(const std::string& name) {
  Running(name).Signal(SIGKILL);
  auto& process = mProcesses.at(name);
  process.asked = true;
  auto ended =
      Until([&process] { return Child(process) == nullptr; }, kLimit,
            fmt::format("{} did not end within {} s of being killed", name, kLimit.count()));
  return Then(std::move(ended),
              [=, this](const std::string&) { return name == kDaemon ? Unsubscribed() : Done(); });
}

Deed CProcesses::Unsubscribed() const {
  const auto alone = [this] {
    return mProcesses.at(kDaemon).daemon || AllPeers([](const auto&, const SProcess& peer) {
             return peer.status.frozen || peer.link->Subscribers() == 0;
           });
  };
  return Until(alone, kLimit, "the daemon is gone, but somebody is subscribed to a peer of it");
}

void CProcesses::CheckSocketsAreGone() const {
  std::error_code ignored;  // no folder, no socket
  for (const auto& entry : std::filesystem::directory_iterator(mRoot.Sockets(), ignored)) {
    const auto name = entry.path().filename().string();
    if (entry.is_socket() && name.starts_with("Feedback")) {
      throw CStepFailure("the daemon has ended and left its socket " + name);
    }
  }
}
