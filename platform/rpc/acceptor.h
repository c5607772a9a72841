// Accepts the connections of all service sockets and hands the good ones on.
//
// gRPC's own listener is not used: one failing accept for want of descriptors ends it for good, a
// second server on a path steals the socket from the first, and it never asks who the peer is.
//
// A connection stays here until its peer has sent the 24 bytes that begin every HTTP/2 connection
// (RFC 9113, section 3.4). So whoever connects and stays silent, or sends something else, costs the
// server nothing: silent connections are bounded in number and time, the oldest gives way.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/os/descriptor.h"
#include "platform/rpc/communicationconfig.h"
#include "platform/rpc/servicesocket.h"

namespace Rpc {

// Threads: Run on one thread, Stop from any.
class CAcceptor {
 public:
  // Takes over an accepted, non-blocking connection whose preface is waiting to be read.
  using Handover = std::function<void(CDescriptor connection)>;

  CAcceptor(const CommunicationConfig& config, Handover handover);
  ~CAcceptor();

  // Takes the name for this process, if it has not been taken yet. Throws as CServiceSocket does.
  void Reserve(const std::string& name);

  // Binds the sockets of all names; before Run. Throws as CServiceSocket does.
  void Listen();

  // Serves until Stop. Nothing wakes it while nobody connects.
  void Run();

  // Ends Run soon, also when it is called first.
  void Stop();

  // Cuts the connections that were handed over and are still open, whatever their peers do.
  void Disconnect();

 private:
  using Clock = std::chrono::steady_clock;

  struct Silent {
    CDescriptor connection;
    std::string service;
    Clock::time_point since;
  };

  // A connection that was handed over. Its descriptor belongs to the server; the inode tells
  // whether the number still means the same socket.
  struct Served {
    int descriptor;
    ino_t inode;
  };

  int MillisecondsToNextDeadline() const;
  bool Watch(int descriptor, unsigned events);
  void SetListening(bool listen);
  void Accept(const CServiceSocket& socket);
  void Greet(int descriptor);
  void DropExpired();
  bool HasRoom();
  void RestoreSockets();
  void WatchDirectory();
  bool MayLogRefusal(Clock::time_point& last);

  const CommunicationConfig mConfig;
  const size_t mLimit;
  const Handover mHandover;
  CDescriptor mEpoll;
  CDescriptor mWakeUp;
  std::vector<std::unique_ptr<CServiceSocket>> mSockets;
  std::list<Silent> mSilent;  // oldest first
  std::mutex mServedMutex;
  std::vector<Served> mServed;  // guarded by mServedMutex
  CDescriptor mDirectoryWatch;
  bool mListening = false;
  Clock::time_point mRetryAt{};  // when to listen again after running out of descriptors
  // Each kind of line once a second at most, whatever peers do.
  Clock::time_point mStrangerLoggedAt{};
  Clock::time_point mRefusalLoggedAt{};
};

}  // namespace Rpc
