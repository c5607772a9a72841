// The RPC layer on gRPC over Unix sockets: one server and any number of clients a process.
//
// Each named service has its socket file, named after it, in the socket directory: /run/ovra,
// unless the store's section "communication" says otherwise (docs/wire.md lists its keys).
//
// Life: construct, register services and create clients, StartServices, then RunServer and
// HandleClientNotifications each on a thread of its own, Stop from a third; both return after it.
// A process that only calls (a tool) needs neither StartServices nor RunServer. Clients work from
// their creation to Stop; after it every call fails at once.
#pragma once

#include <memory>
#include <string>

#include "platform/rpc/client.h"
#include "platform/rpc/logger.h"

class IDiagnostics;
class IFeedback;
class IGenericControl;
class ILogConfig;
class IMeter;
class ISessionManager;

class GrpcBackend {
 public:
  // For the messages of every backend of this process; set before the first one is constructed.
  static void SetLogger(std::shared_ptr<Rpc::ILogger> logger);

  // The path of the store; a missing file means the defaults, and so does what is not usable in the
  // section "communication", which is logged.
  explicit GrpcBackend(const std::string& configPath);
  virtual ~GrpcBackend();
  GrpcBackend(const GrpcBackend&) = delete;
  GrpcBackend& operator=(const GrpcBackend&) = delete;

  // Takes a service's name for this process at once, so that a second instance finds out before it
  // touches anything else. Throws as StartServices does; which does it for the names left.
  void Reserve(const std::string& name);

  // Binds the sockets of all registered services. Throws Rpc::CommunicationException where one
  // cannot be served, naming the process that holds it already or the system's reason.
  void StartServices();

  // Accepts connections until Stop.
  void RunServer();

  // Runs the clients' notification callbacks, in order, until Stop.
  void HandleClientNotifications();

  // For a process that is about to stop: calls to peers that are under way end at once, later ones
  // get 200 ms, so that no peer that hangs holds up what is still to be done.
  void PrepareStop();

  // Ends everything within a bounded time: refuses new calls, cancels what is under way, removes
  // the sockets. Requests that are still inside a service when it is called hold it up, so their
  // owners release them before. Harmless when repeated.
  void Stop();

 protected:
  // A service interface may be registered once a process.
  void Register(const std::string& name, std::shared_ptr<IGenericControl> service);
  void Register(const std::string& name, std::shared_ptr<ILogConfig> service);
  void Register(const std::string& name, std::shared_ptr<IFeedback> service);
  void Register(const std::string& name, std::shared_ptr<IDiagnostics> service);
  void Register(const std::string& name, std::shared_ptr<ISessionManager> service);
  void Register(const std::string& name, std::shared_ptr<IMeter> service);

  // Defined for the six service interfaces.
  template <typename Interface>
  std::shared_ptr<Rpc::IClient<Interface>> Connect(const std::string& name);

 private:
  class CImplementation;
  std::unique_ptr<CImplementation> mImplementation;
};
