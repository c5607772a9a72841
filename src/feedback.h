// The application: builds every object of the process in a fixed order, joins them and runs.
#pragma once

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "platform/ipc/diagnostics.pb.h"
#include "platform/rpc/appcommunicationhost.h"
#include "platform/worker/worker.h"

class IConnector;
class IDiagnostics;
class IMeter;

// Threads: constructed, run and destroyed on the main thread.
class CFeedback {
 public:
  // The root directory is expected to end with a slash. Throws what a component's constructor
  // throws, among them Rpc::CommunicationException when another process serves these services.
  explicit CFeedback(const std::string& root);
  ~CFeedback();

  // Serves until SIGINT, which must be blocked in all threads.
  void Run();

 private:
  void ConnectIDiagnostics() const;

  std::shared_ptr<AppCommunicationHost<GrpcBackend>> mHost;
  std::shared_ptr<IDiagnostics> mDiagnostics;
  std::vector<std::shared_ptr<IMeter>> mMeters;
  std::vector<std::shared_ptr<IConnector>> mConnectors;
  std::thread mServerThread;
  std::thread mNotificationThread;
  std::shared_ptr<CWorker> mWorker;
};
