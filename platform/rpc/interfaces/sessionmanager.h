// The session manager: what goes on at the connector.
#pragma once

#include <cstddef>
#include <functional>

#include "platform/ipc/sessionmanager.pb.h"

// Threads: as for IDiagnostics.
class ISessionManager {
 public:
  // Calling end: set by the owner, hears the present state first and then each change.
  // Serving end: set by the RPC layer; hands the state to every subscriber and returns when all
  // have replied; throws Rpc::CommunicationException when one did not within the time limit.
  using ConnectorStateCallback = std::function<void(const ipc::MConnectorState&)>;

  virtual ~ISessionManager() = default;

  // Both throw Rpc::CommunicationException at the calling end when the service cannot be reached.
  virtual ipc::MConnectorInfo GetConnectorInfo(const ipc::MInstanceType& instance) = 0;
  virtual ipc::MResult Authorize(const ipc::MAuthorizeRequest& request) = 0;

  // Replaces the one callback; an empty one ends it. When this returns, no call of the callback
  // before it is under way (unless it was called from that callback).
  virtual void SetConnectorStateCallback(ConnectorStateCallback callback) = 0;

  // Serving end: told by the RPC layer how many are subscribed, at each change, on any of its
  // threads. Must neither block nor call back.
  virtual void OnSubscribers(std::size_t /*count*/) {}
};
