#include "virtualcharger/scenario/processes.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <sstream>
#include <system_error>
#include <utility>

#include "platform/ipc/sessionmanager.pb.h"

namespace {

using namespace std::chrono_literals;

constexpr auto kLimit = 10s;  // for what only a fault can delay
constexpr auto kStopLimit = 5s;
constexpr auto kGlance = 5ms;  // between two looks at a condition
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

// The same value again is as old as before.
void Take(std::optional<SLast<int>>& last, int value) {
  if (last && last->value == value) return;
  last = {value, std::chrono::steady_clock::now()};
}

}  // namespace

CProcesses::CProcesses(SSettings settings, CInterrupt& interrupt, std::function<void()> watch)
    : mSettings(std::move(settings)),
      mInterrupt(interrupt),
      mWatch(std::move(watch)),
      mConnectorState(ipc::EConnectorStateAvailable) {
  for (const auto* name : {kBoardController, kDiagnostics, kMeter, kSessionManager}) mPeers[name];
}

CProcesses::~CProcesses() = default;

void CProcesses::Start() {
  for (const auto& [name, link] : mPeers) StartPeer(name);
  StartDaemon();
}

void CProcesses::Stop() {
  if (mDaemon) {
    mDaemon->Thaw();
    StopProcess(kDaemon, *mDaemon);
    mDaemon.reset();
  }
  for (auto& [name, link] : mPeers) {
    if (!link) continue;
    link->Process().Thaw();
    StopProcess(name, link->Process());
    link.reset();
  }
}

void CProcesses::Control(EProcessAction action, const std::string& name) {
  switch (action) {
    case EProcessAction::Start:
      StartProcess(name);
      return;
    case EProcessAction::Kill:
      if (Find(name) == nullptr) throw CStepFailure(name + " does not run");
      Forget(name);
      return;
    case EProcessAction::Stop:
      StopProcess(name, Running(name));
      Forget(name);
      return;
    case EProcessAction::Freeze:
      Running(name).Freeze();
      return;
    case EProcessAction::Thaw:
      if (auto* process = Find(name); process != nullptr && process->IsFrozen()) {
        process->Thaw();
        return;
      }
      throw CStepFailure(name + " is not frozen");
  }
}

std::string CProcesses::Tell(const std::string& peer, const std::string& command) {
  Running(peer);
  auto& link = *mPeers.at(peer);
  const auto number = link.Send(command);
  if (!Await([&] { return link.Outcome(number).has_value(); }, kLimit)) {
    throw CStepFailure(fmt::format("{} did not answer within {} s", peer, kLimit.count()));
  }
  std::istringstream words(command);
  std::string word;
  if (words >> word && word == "connector") words >> mConnectorState;
  auto outcome = *link.Outcome(number);
  Look();  // what the daemon sent to another peer before it replied has come by now
  return outcome;
}

bool CProcesses::Await(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
  const auto end = std::chrono::steady_clock::now() + limit;
  for (;;) {
    // The time first: what holds at the limit is in time.
    const bool over = std::chrono::steady_clock::now() >= end;
    Look();
    if (condition()) return true;
    CheckProcesses();
    if (over) return false;
    std::vector<pollfd> inputs{{mInterrupt.Descriptor(), POLLIN, 0}};
    for (const auto& [name, link] : mPeers) {
      if (link) inputs.push_back({link->Descriptor(), POLLIN, 0});
    }
    poll(inputs.data(), inputs.size(),
         static_cast<int>(std::chrono::milliseconds(kGlance).count()));
  }
}

bool CProcesses::Runs(const std::string& name) {
  auto* process = Find(name);
  return process != nullptr && !process->IsFrozen();
}

std::optional<SLast<std::string>> CProcesses::LastSignal(int identifier) const {
  const auto found = mSignals.find(identifier);
  return found == mSignals.end() ? std::nullopt : std::optional(found->second);
}

CChildProcess* CProcesses::Find(const std::string& name) {
  if (name == kDaemon) return mDaemon.get();
  const auto& link = mPeers.at(name);
  return link ? &link->Process() : nullptr;
}

CChildProcess& CProcesses::Running(const std::string& name) {
  auto* process = Find(name);
  if (process == nullptr) {
    throw CStepFailure(fmt::format("{0} does not run; \"start {0}\" first", name));
  }
  if (process->IsFrozen()) {
    throw CStepFailure(fmt::format("{0} is frozen; \"thaw {0}\" first", name));
  }
  return *process;
}

void CProcesses::StartProcess(const std::string& name) {
  if (Find(name) != nullptr) throw CStepFailure(name + " runs already");
  if (name == kDaemon) {
    StartDaemon();
  } else {
    StartPeer(name);
  }
}

void CProcesses::StartPeer(const std::string& name) {
  const CFile log(mRoot.Log(name), kAppend);
  auto& link = mPeers.at(name);
  link = std::make_unique<CPeerLink>(
      std::vector<std::string>{ThisProgram(), "--peer", name, "--store", mRoot.Store(), "--state",
                               std::to_string(mConnectorState)},
      log.Get(), [this](const std::string& kind, int number, const std::string& text) {
        TakeEvent(kind, number, text);
      });
  if (name == kMeter) mDisplay.reset();
  if (!Await([&] { return link->IsServing(); }, kLimit)) {
    throw CStepFailure(fmt::format("{} did not begin to serve within {} s", name, kLimit.count()));
  }
}

void CProcesses::StartDaemon() {
  const CFile log(mRoot.Log("feedback"), kAppend);
  const CFile nothing("/dev/null", O_RDONLY);
  mDaemon = std::make_unique<CChildProcess>(
      std::vector<std::string>{mSettings.daemon, "-r", mRoot.Path() + '/'},
      CChildProcess::SStandard{nothing.Get(), log.Get(), log.Get()});
  AwaitDaemon();
}

bool CProcesses::HasFoundDaemon(const std::string& peer) const {
  if (peer == kMeter) return true;  // hears of the daemon when its display is set
  if (peer == kBoardController) return mState.has_value();
  return mPeers.at(peer)->Subscribers() > 0;
}

void CProcesses::AwaitDaemon() {
  for (const auto& [name, link] : mPeers) {
    if (!link || link->Process().IsFrozen()) continue;
    if (!Await([this, &peer = name] { return HasFoundDaemon(peer); }, kLimit)) {
      throw CStepFailure(fmt::format("the daemon and {} did not find each other within {} s", name,
                                     kLimit.count()));
    }
  }
}

void CProcesses::CheckSocketsAreGone() const {
  for (const auto& entry : std::filesystem::directory_iterator(mRoot.Sockets())) {
    const auto name = entry.path().filename().string();
    if (entry.is_socket() && name.starts_with("Feedback")) {
      throw CStepFailure("the daemon has ended and left its socket " + name);
    }
  }
}

void CProcesses::TakeEvent(const std::string& kind, int number, const std::string& text) {
  if (kind == "signal") {
    mSignals[number] = {text, std::chrono::steady_clock::now()};
  } else if (kind == "state") {
    Take(mState, number);
    mStateReports.push_back({number, std::chrono::steady_clock::now()});
  } else if (kind == "alive") {
    ++mAliveMessages;
  } else if (kind == "display") {
    Take(mDisplay, number);
  }
}

void CProcesses::StopProcess(const std::string& name, CChildProcess& process) {
  process.Signal(name == kDaemon ? SIGINT : SIGTERM);
  const auto end = std::chrono::steady_clock::now() + kStopLimit;
  while (!process.Ended() && std::chrono::steady_clock::now() < end) {
    Look();
    poll(nullptr, 0, static_cast<int>(std::chrono::milliseconds(kGlance).count()));
  }
  if (!process.Ended()) {
    throw CStepFailure(
        fmt::format("{} did not end within {} s of being asked to", name, kStopLimit.count()));
  }
  if (*process.Ended() != 0) {
    throw CStepFailure(fmt::format("{} was asked to end: {} instead of exit status 0", name,
                                   DescribeEnd(*process.Ended())));
  }
  if (name == kDaemon) CheckSocketsAreGone();
}

void CProcesses::Forget(const std::string& name) {
  if (name != kDaemon) {
    mPeers.at(name).reset();
    return;
  }
  mDaemon.reset();
  // A daemon that is started later must not be taken for this one.
  mState.reset();
  for (const auto& [peer, link] : mPeers) {
    if (!link || link->Process().IsFrozen()) continue;
    if (!Await([&each = *link] { return each.Subscribers() == 0; }, kLimit)) {
      throw CStepFailure(fmt::format("the daemon is gone, but somebody is subscribed to {}", peer));
    }
  }
}

void CProcesses::Look() {
  mInterrupt.Check();
  for (const auto& [name, link] : mPeers) {
    if (link) link->Read();
  }
  mLog.Read(mSettings.showLog);
  mWatch();
}

void CProcesses::CheckProcesses() {
  if (mDaemon && mDaemon->Ended()) {
    const auto end = DescribeEnd(*mDaemon->Ended());
    mDaemon.reset();
    throw CStepFailure("the daemon has ended by itself: " + end);
  }
  for (auto& [name, link] : mPeers) {
    if (!link || !link->Process().Ended()) continue;
    const auto end = DescribeEnd(*link->Process().Ended());
    link.reset();
    throw CStepFailure(fmt::format("{} has ended by itself: {}", name, end));
  }
}
