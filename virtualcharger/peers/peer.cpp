#include "virtualcharger/peers/peer.h"

#include <utility>

#include "virtualcharger/peers/virtualdiagnostics.h"
#include "virtualcharger/peers/virtualsessionmanager.h"

namespace {

// The service under its name, and the words of its commands.
class CSessionManagerPeer : public IPeer {
 public:
  CSessionManagerPeer(int state, PeerEvents events)
      : mService(std::make_shared<CVirtualSessionManager>(state, std::move(events))) {}

  void Offer(AppCommunicationHost<GrpcBackend>& host) override {
    host.AddService<ISessionManager>("SessionManager", mService);
  }

  std::string Execute(const std::vector<std::string>& words) override {
    if (words.size() == 2 && words[0] == "connector") {
      return mService->SetConnectorState(std::stoi(words[1]));
    }
    return std::string(kOutcomeUnknown);
  }

 private:
  const std::shared_ptr<CVirtualSessionManager> mService;
};

class CDiagnosticsPeer : public IPeer {
 public:
  explicit CDiagnosticsPeer(PeerEvents events)
      : mService(std::make_shared<CVirtualDiagnostics>(std::move(events))) {}

  void Offer(AppCommunicationHost<GrpcBackend>& host) override {
    host.AddService<IDiagnostics>("Diagnostics", mService);
  }

  std::string Execute(const std::vector<std::string>& words) override {
    if (words.size() == 3 && words[0] == "error") {
      return mService->SetError(std::stoi(words[1]), words[2] == "on");
    }
    return std::string(kOutcomeUnknown);
  }

 private:
  const std::shared_ptr<CVirtualDiagnostics> mService;
};

}  // namespace

std::unique_ptr<IPeer> MakePeer(std::string_view name, int connectorState, PeerEvents events) {
  if (name == "session-manager") {
    return std::make_unique<CSessionManagerPeer>(connectorState, std::move(events));
  }
  if (name == "diagnostics") {
    return std::make_unique<CDiagnosticsPeer>(std::move(events));
  }
  return nullptr;
}
