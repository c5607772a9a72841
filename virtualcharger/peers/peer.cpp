#include "virtualcharger/peers/peer.h"

#include <optional>
#include <utility>

#include "virtualcharger/peers/virtualboardcontroller.h"
#include "virtualcharger/peers/virtualdiagnostics.h"
#include "virtualcharger/peers/virtualmeter.h"
#include "virtualcharger/peers/virtualsessionmanager.h"

namespace {

// The service under its name, and the words of its commands.
class CSessionManagerPeer : public IPeer {
 public:
  CSessionManagerPeer(int state, PeerEvents events)
      : mService(std::make_shared<CVirtualSessionManager>(state, std::move(events))) {}

  void Join(AppCommunicationHost<GrpcBackend>& host) override {
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

  void Join(AppCommunicationHost<GrpcBackend>& host) override {
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

class CMeterPeer : public IPeer {
 public:
  explicit CMeterPeer(PeerEvents events)
      : mService(std::make_shared<CVirtualMeter>(std::move(events))) {}

  void Join(AppCommunicationHost<GrpcBackend>& host) override {
    host.AddService<IMeter>("Meter1", mService);
  }

  std::string Execute(const std::vector<std::string>& words) override {
    if (words.size() != 1 || (words[0] != "accept" && words[0] != "refuse")) {
      return std::string(kOutcomeUnknown);
    }
    mService->Refuse(words[0] == "refuse");
    return std::string(kOutcomeOk);
  }

 private:
  const std::shared_ptr<CVirtualMeter> mService;
};

class CBoardControllerPeer : public IPeer {
 public:
  explicit CBoardControllerPeer(PeerEvents events) : mEvents(std::move(events)) {}

  void Join(AppCommunicationHost<GrpcBackend>& host) override {
    mController.emplace(host.CreateClient<IGenericControl>("FeedbackGenCtrl")->GetInterface(),
                        host.CreateClient<IFeedback>("Feedback")->GetInterface(),
                        host.CreateClient<ILogConfig>("FeedbackLog")->GetInterface(), mEvents);
  }

  std::string Execute(const std::vector<std::string>& words) override {
    if (words.size() == 1 && words[0] == "enable") return mController->Enable();
    if (words.size() == 1 && words[0] == "disable") return mController->Disable();
    if (words.size() == 2 && words[0] == "log-level") {
      return mController->SetLogLevel(std::stoi(words[1]));
    }
    if (words.size() == 2 && words[0] == "event") return mController->Trigger(std::stoi(words[1]));
    return std::string(kOutcomeUnknown);
  }

 private:
  const PeerEvents mEvents;
  std::optional<CVirtualBoardController> mController;
};

}  // namespace

std::unique_ptr<IPeer> MakePeer(std::string_view name, int connectorState, PeerEvents events) {
  if (name == "session-manager") {
    return std::make_unique<CSessionManagerPeer>(connectorState, std::move(events));
  }
  if (name == "diagnostics") {
    return std::make_unique<CDiagnosticsPeer>(std::move(events));
  }
  if (name == "board-controller") {
    return std::make_unique<CBoardControllerPeer>(std::move(events));
  }
  if (name == "meter") {
    return std::make_unique<CMeterPeer>(std::move(events));
  }
  return nullptr;
}
