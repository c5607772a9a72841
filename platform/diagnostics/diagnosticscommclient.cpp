#include "platform/diagnostics/diagnosticscommclient.h"

#include <mutex>
#include <utility>

#include "platform/rpc/communicationexception.h"
#include "platform/rpc/interfaces/diagnostics.h"

namespace {

struct Client {
  std::mutex mutex;
  std::shared_ptr<IDiagnostics> diagnostics;  // guarded by mutex
};

Client& TheClient() {
  static Client client;
  return client;
}

void Replace(std::shared_ptr<IDiagnostics> diagnostics) {
  Client& client = TheClient();
  const std::lock_guard lock(client.mutex);
  client.diagnostics.swap(diagnostics);
}

}  // namespace

void CDiagnosticsCommClient::Initialize(AppCommunicationHost<GrpcBackend>& host) {
  Replace(host.CreateClient<IDiagnostics>("Diagnostics")->GetInterface());
}

void CDiagnosticsCommClient::Initialize(std::shared_ptr<IDiagnostics> diagnostics) {
  Replace(std::move(diagnostics));
}

bool CDiagnosticsCommClient::IsInitialized() {
  Client& client = TheClient();
  const std::lock_guard lock(client.mutex);
  return client.diagnostics != nullptr;
}

void CDiagnosticsCommClient::Terminate() {
  Replace(nullptr);
}

std::shared_ptr<IDiagnostics> CDiagnosticsCommClient::Get() {
  Client& client = TheClient();
  const std::lock_guard lock(client.mutex);
  if (!client.diagnostics) {
    throw Rpc::CommunicationException("the diagnostics client is not initialised");
  }
  return client.diagnostics;
}
