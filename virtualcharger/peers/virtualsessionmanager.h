// The charger's session manager, reduced to what its subscribers can see: the connector's state.
#pragma once

#include <atomic>
#include <mutex>
#include <string>

#include "platform/rpc/interfaces/sessionmanager.h"
#include "virtualcharger/peers/peer.h"
#include "virtualcharger/peers/wirelog.h"

// Events: "subscribers N", "authorize TOKEN", "connector STATE" for each one that
// it reports.
//
// Threads: any.
class CVirtualSessionManager : public ISessionManager {
 public:
  // The state is there for the first subscriber already. Any number is a state.
  CVirtualSessionManager(int state, PeerEvents events);

  ipc::MConnectorInfo GetConnectorInfo(const ipc::MInstanceType& instance) override;
  // Agrees to everything.
  ipc::MResult Authorize(const ipc::MAuthorizeRequest& request) override;
  void SetConnectorStateCallback(ConnectorStateCallback callback) override;
  void OnSubscribers(std::size_t count) override;

  // Returns the outcome when all subscribers have replied.
  std::string SetConnectorState(int state);

 private:
  const PeerEvents mEvents;
  const CWireLog mWire;
  std::atomic<int> mState;
  std::atomic<std::size_t> mSubscribers = 0;
  std::mutex mMutex;  // also held while subscribers are told, so that states go out in their order
  ConnectorStateCallback mTellSubscribers;  // guarded by mMutex
};
