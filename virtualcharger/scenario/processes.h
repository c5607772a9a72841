// The daemon and its peers, each a process of its own in a private root.
#pragma once

#include <poll.h>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "virtualcharger/hardware/history.h"
#include "virtualcharger/scenario/daemonlog.h"
#include "virtualcharger/scenario/deed.h"
#include "virtualcharger/scenario/ibench.h"
#include "virtualcharger/scenario/peerlink.h"
#include "virtualcharger/scenario/privateroot.h"

// The names of the processes.
inline constexpr auto kDaemon = "daemon";
inline constexpr auto kBoardController = "board-controller";
inline constexpr auto kDiagnostics = "diagnostics";
inline constexpr auto kMeter = "meter";
inline constexpr auto kSessionManager = "session-manager";

// Starting: a peer that does not serve yet, a daemon that has not found its peers. Dead: ended
// without being asked to.
enum class EProcessState { Stopped, Starting, Running, Dead };

struct SProcessStatus {
  EProcessState state = EProcessState::Stopped;
  bool frozen = false;
  std::chrono::steady_clock::time_point since{};
  std::string detail{};  // how it ended, empty before it ran: "signal 9 (Killed)"
};

// What a peer got from the daemon last, and since when it is so.
template <typename Value>
struct SLast {
  Value value;
  std::chrono::steady_clock::time_point time;
};

// Nothing here waits: what is begun goes on while Look is called again and again, at once when one
// of the inputs is readable and every few ms while a deed is under way. What cannot be begun throws
// CStepFailure.
//
// Threads: one.
class CProcesses {
 public:
  struct SSettings {
    std::string daemon;    // path
    bool showLog = false;  // of the daemon, as it comes
  };
  // Whatever a peer tells beyond what is kept here.
  using OtherEvents = std::function<void(const std::string& peer, const std::string& kind,
                                         std::int64_t number, const std::string& text)>;

  explicit CProcesses(SSettings settings);
  ~CProcesses();

  void HearOtherEvents(OtherEvents handler) { mOtherEvents = std::move(handler); }

  // Takes in what has come and who has ended.
  void Look();
  // To be polled besides.
  std::vector<pollfd> Inputs() const;

  // The peers, and the daemon when they serve; ends when it serves and has subscribed to them.
  Deed StartAll();
  // Frozen ones are thawed; everything that runs ends orderly, the daemon first.
  Deed StopAll();
  // Nothing has been told yet; the connector is available. No process runs.
  void Forget();
  // The deed ends when what was done has come into force: a daemon that was stopped or killed has
  // lost its subscriptions by then.
  Deed Control(EProcessAction action, const std::string& name);
  // Ends with the outcome, as in peer.h. A frozen peer may be thawed before the limit.
  Deed Tell(const std::string& peer, const std::string& command);

  const SProcessStatus& Status(const std::string& name) const;
  // Neither ended nor frozen.
  bool Runs(const std::string& name) const;
  // Which process has ended without being asked to, and how, told once.
  std::optional<std::string> TakeDeath();

  std::optional<SLast<std::string>> LastSignal(int identifier) const;
  // By their identifiers, all that diagnostics got.
  const std::map<int, SLast<std::string>>& Signals() const { return mSignals; }
  // Nothing before a daemon that was started has reported its first one.
  const std::optional<SLast<int>>& LastState() const { return mState; }
  // What the session manager has told last.
  const SLast<int>& Connector() const { return mConnector; }
  // Whether the meter takes a new brightness of its display.
  bool MeterAccepts() const { return mMeterAccepts; }
  // In percent; nothing before the meter that runs was told one.
  const std::optional<SLast<int>>& Display() const { return mDisplay; }
  // The newest ones, a repeated state too; what a new board controller hears first as well.
  using Reports = CHistory<SLast<int>>;
  const Reports& StateReports() const { return mStateReports; }
  // How many have come up to now, and when the last one.
  const SLast<unsigned>& AliveMessages() const { return mAliveMessages; }
  CPrivateRoot& Root() { return mRoot; }
  const CPrivateRoot& Root() const { return mRoot; }
  CDaemonLog& DaemonLog() { return mLog; }

 private:
  struct SProcess {
    SProcessStatus status;
    bool asked = false;               // to end
    std::unique_ptr<CPeerLink> link;  // of a peer that runs
    std::unique_ptr<CChildProcess> daemon;
  };

  static CChildProcess* Child(const SProcess& process);
  SProcess& Ended(const std::string& name);
  CChildProcess& Running(const std::string& name);
  CChildProcess& Unfrozen(const std::string& name);
  Deed StartPeer(const std::string& name);
  Deed StartDaemon();
  Deed Started(const std::string& name);
  Deed Stop(const std::string& name);
  Deed Kill(const std::string& name);
  Deed Unsubscribed() const;
  bool AllPeers(
      const std::function<bool(const std::string& name, const SProcess&)>& condition) const;
  bool HasFoundDaemon(const std::string& peer, const SProcess& process) const;
  void SetState(SProcess& process, EProcessState state, const std::string& detail = {});
  void CheckEnd(const std::string& name, SProcess& process);
  void CheckSocketsAreGone() const;
  void TakeEvent(const std::string& peer, const std::string& kind, std::int64_t number,
                 const std::string& text);

  const SSettings mSettings;
  OtherEvents mOtherEvents;
  CPrivateRoot mRoot;
  std::optional<std::string> mDeath;
  std::map<int, SLast<std::string>> mSignals;
  std::optional<SLast<int>> mState;
  std::optional<SLast<int>> mDisplay;
  bool mMeterAccepts = true;
  Reports mStateReports{1000};
  SLast<unsigned> mAliveMessages{};
  SLast<int> mConnector;
  CDaemonLog mLog{mRoot.Log("feedback")};
  std::map<std::string, SProcess> mProcesses;  // last: their events use the members above
};
