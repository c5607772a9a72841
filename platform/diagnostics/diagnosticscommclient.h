// The process-wide client of the diagnostics service.
#pragma once

#include <memory>

#include "platform/rpc/appcommunicationhost.h"

class IDiagnostics;

// Threads: Initialize and Terminate from the owner's thread; everything else from any.
class CDiagnosticsCommClient {
 public:
  // Opens the client of the service "Diagnostics" on the host.
  static void Initialize(AppCommunicationHost<GrpcBackend>& host);

  // The same on any realisation of the service.
  static void Initialize(std::shared_ptr<IDiagnostics> diagnostics);

  static bool IsInitialized();

  // Signals that are sent from now on fail with Rpc::CommunicationException.
  static void Terminate();

  // The service. Throws Rpc::CommunicationException while the client is not initialised.
  static std::shared_ptr<IDiagnostics> Get();
};
