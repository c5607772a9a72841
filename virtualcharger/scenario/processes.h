// The daemon and its peers, each a process of its own in a private root.
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "virtualcharger/scenario/daemonlog.h"
#include "virtualcharger/scenario/icharger.h"
#include "virtualcharger/scenario/interrupt.h"
#include "virtualcharger/scenario/peerlink.h"
#include "virtualcharger/scenario/privateroot.h"

// The names of the processes.
inline constexpr auto kDaemon = "daemon";
inline constexpr auto kBoardController = "board-controller";
inline constexpr auto kDiagnostics = "diagnostics";
inline constexpr auto kMeter = "meter";
inline constexpr auto kSessionManager = "session-manager";

// What a peer got from the daemon last, and since when it is so.
template <typename Value>
struct SLast {
  Value value;
  std::chrono::steady_clock::time_point time;
};

// Threads: one. Every operation that waits throws CStepFailure where a process has ended by itself,
// and CInterrupted.
class CProcesses {
 public:
  struct SSettings {
    std::string daemon;    // path
    bool showLog = false;  // of the daemon, as it comes
  };

  // The watch is called at every look at what goes on, every few ms while something is awaited.
  CProcesses(SSettings settings, CInterrupt& interrupt, std::function<void()> watch);
  ~CProcesses();

  // The peers first, then the daemon; returns when it serves and has subscribed to them.
  void Start();
  // Everything ends orderly, the daemon first. Throws CStepFailure where it does not.
  void Stop();

  void Control(EProcessAction action, const std::string& name);

  // The outcome, as in peer.h.
  std::string Tell(const std::string& peer, const std::string& command);

  // Takes in what comes until the condition holds; false if it does not within the time.
  bool Await(const std::function<bool()>& condition, std::chrono::milliseconds limit);

  // Neither ended nor frozen.
  bool Runs(const std::string& name);

  std::optional<SLast<std::string>> LastSignal(int identifier) const;
  // Nothing before a daemon that was started has reported its first one.
  const std::optional<SLast<int>>& LastState() const { return mState; }
  // In percent; nothing before the meter that runs was told one.
  const std::optional<SLast<int>>& Display() const { return mDisplay; }
  // All that came up to now, a repeated state too; what a new board controller hears first as well.
  const std::vector<SLast<int>>& StateReports() const { return mStateReports; }
  // How many messages have come up to now.
  unsigned AliveMessages() const { return mAliveMessages; }
  CPrivateRoot& Root() { return mRoot; }
  CDaemonLog& DaemonLog() { return mLog; }

 private:
  CChildProcess* Find(const std::string& name);
  CChildProcess& Running(const std::string& name);
  void StartProcess(const std::string& name);
  void StartPeer(const std::string& name);
  void StartDaemon();
  void StopProcess(const std::string& name, CChildProcess& process);
  void Forget(const std::string& name);
  bool HasFoundDaemon(const std::string& peer) const;
  void AwaitDaemon();
  void CheckSocketsAreGone() const;
  void TakeEvent(const std::string& kind, int number, const std::string& text);
  void Look();
  void CheckProcesses();

  const SSettings mSettings;
  CInterrupt& mInterrupt;
  const std::function<void()> mWatch;
  CPrivateRoot mRoot;
  std::map<std::string, std::unique_ptr<CPeerLink>> mPeers;
  std::unique_ptr<CChildProcess> mDaemon;
  std::map<int, SLast<std::string>> mSignals;
  std::optional<SLast<int>> mState;
  std::optional<SLast<int>> mDisplay;
  std::vector<SLast<int>> mStateReports;
  unsigned mAliveMessages = 0;
  int mConnectorState;  // what the session manager told last, and remembers
  CDaemonLog mLog{mRoot.Log("feedback")};
};
