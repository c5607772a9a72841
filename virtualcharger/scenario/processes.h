// The daemon and its peers, each a process of its own in a private root.
#pragma once

#include <chrono>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "virtualcharger/scenario/icharger.h"
#include "virtualcharger/scenario/interrupt.h"
#include "virtualcharger/scenario/peerlink.h"
#include "virtualcharger/scenario/privateroot.h"

// The last value that the diagnostics service got of a signal.
struct SLastSignal {
  std::string text;
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

  // The peers first, then the daemon; returns when it has subscribed to them.
  void Start();
  // Everything ends orderly, the daemon first. Throws CStepFailure where it does not.
  void Stop();

  void Control(EProcessAction action, const std::string& name);

  // The outcome, as in peer.h.
  std::string Tell(const std::string& peer, const std::string& command);

  // Takes in what comes until the condition holds; false if it does not within the time.
  bool Await(const std::function<bool()>& condition, std::chrono::milliseconds limit);

  std::optional<SLastSignal> LastSignal(int identifier) const;
  CPrivateRoot& Root() { return mRoot; }

 private:
  CChildProcess* Find(const std::string& name);
  CChildProcess& Running(const std::string& name);
  void StartProcess(const std::string& name);
  void StartPeer(const std::string& name);
  void StartDaemon();
  void StopProcess(const std::string& name, CChildProcess& process);
  void Forget(const std::string& name);
  void AwaitSubscriptions();
  void Look();
  void CheckProcesses();
  void ShowLog();

  const SSettings mSettings;
  CInterrupt& mInterrupt;
  const std::function<void()> mWatch;
  CPrivateRoot mRoot;
  std::map<std::string, std::unique_ptr<CPeerLink>> mPeers;
  std::unique_ptr<CChildProcess> mDaemon;
  std::map<int, SLastSignal> mSignals;
  int mConnectorState;  // what the session manager told last, and remembers
  std::ifstream mLog;
};
