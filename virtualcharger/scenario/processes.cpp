#include "virtualcharger/scenario/processes.h"

#include <fmt/format.h>

#include <algorithm>
#include <csignal>
#include <utility>

#include "platform/ipc/sessionmanager.pb.h"

namespace {

using Clock = std::chrono::steady_clock;

// The same value again is as old as before.
void Take(std::optional<SLast<int>>& last, int value) {
  if (!last || last->value != value) last = {value, Clock::now()};
}

}  // namespace

CProcesses::CProcesses(SSettings settings)
    : mSettings(std::move(settings)), mConnector{ipc::EConnectorStateAvailable, Clock::now()} {
  for (const auto* name : {kDaemon, kBoardController, kDiagnostics, kMeter, kSessionManager}) {
    SetState(mProcesses[name], EProcessState::Stopped);
  }
}

CProcesses::~CProcesses() = default;

void CProcesses::Forget() {
  mSignals.clear();
  mDisplay.reset();
  mMeterAccepts = true;
  mConnector = {ipc::EConnectorStateAvailable, Clock::now()};
}

void CProcesses::Look() {
  for (const auto& [name, process] : mProcesses) {
    if (process.link) process.link->Look();
  }
  for (auto& [name, process] : mProcesses) {
    CheckEnd(name, process);
    const auto* child = Child(process);
    if (child != nullptr && child->IsFrozen() != process.status.frozen) {
      process.status.frozen = child->IsFrozen();
      process.status.since = Clock::now();
    }
    if (process.status.state != EProcessState::Starting) continue;
    const bool ready = name == kDaemon ? AllPeers([this](const auto& peer, const auto& each) {
      return each.status.frozen || HasFoundDaemon(peer, each);
    })
                                       : process.link->IsServing();
    if (ready) SetState(process, EProcessState::Running);
  }
  mLog.Read(mSettings.showLog);
}

std::vector<pollfd> CProcesses::Inputs() const {
  std::vector<pollfd> inputs;
  for (const auto& [name, process] : mProcesses) {
    if (process.link) inputs.push_back(process.link->Input());
    if (const auto* child = Child(process)) inputs.push_back({child->Descriptor(), POLLIN, 0});
  }
  return inputs;
}

const SProcessStatus& CProcesses::Status(const std::string& name) const {
  return mProcesses.at(name).status;
}

bool CProcesses::Runs(const std::string& name) const {
  const auto& process = mProcesses.at(name);
  return Child(process) != nullptr && !process.status.frozen;
}

std::optional<std::string> CProcesses::TakeDeath() {
  return std::exchange(mDeath, std::nullopt);
}

std::optional<SLast<std::string>> CProcesses::LastSignal(int identifier) const {
  const auto found = mSignals.find(identifier);
  return found == mSignals.end() ? std::nullopt : std::optional(found->second);
}

CChildProcess* CProcesses::Child(const SProcess& process) {
  return process.link ? &process.link->Process() : process.daemon.get();
}

bool CProcesses::AllPeers(
    const std::function<bool(const std::string& name, const SProcess&)>& condition) const {
  return std::ranges::all_of(mProcesses, [&](const auto& entry) {
    return !entry.second.link || condition(entry.first, entry.second);
  });
}

bool CProcesses::HasFoundDaemon(const std::string& peer, const SProcess& process) const {
  if (peer == kMeter) return true;  // hears of the daemon when its display is set
  if (peer == kBoardController) return mState.has_value();
  return process.link->Subscribers() > 0;
}

void CProcesses::SetState(SProcess& process, EProcessState state, const std::string& detail) {
  process.status = {state, false, Clock::now(), detail};
}

void CProcesses::CheckEnd(const std::string& name, SProcess& process) {
  auto* child = Child(process);
  if (child == nullptr || !child->Ended()) return;
  const auto end = DescribeEnd(*child->Ended());
  if (process.link) process.link->Look();
  process.link.reset();
  process.daemon.reset();
  SetState(process, process.asked ? EProcessState::Stopped : EProcessState::Dead, end);
  if (!process.asked) {
    mDeath = fmt::format("{} has ended by itself: {}", name == kDaemon ? "the daemon" : name, end);
  }
  // A daemon that is started later must not be taken for this one.
  if (name == kDaemon) mState.reset();
}

void CProcesses::TakeEvent(const std::string& peer, const std::string& kind, std::int64_t number,
                           const std::string& text) {
  const auto value = static_cast<int>(number);
  if (kind == "signal") {
    mSignals[value] = {text, Clock::now()};
  } else if (kind == "state") {
    Take(mState, value);
    mStateReports.Add({value, Clock::now()});
  } else if (kind == "alive") {
    mAliveMessages = {mAliveMessages.value + 1, Clock::now()};
  } else if (kind == "display") {
    Take(mDisplay, value);
  } else if (kind == "accepts") {
    mMeterAccepts = number != 0;
  } else if (kind == "connector") {
    mConnector = {value, Clock::now()};
  } else if (mOtherEvents) {
    mOtherEvents(peer, kind, number, text);
  }
}
