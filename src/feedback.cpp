#include "src/feedback.h"

#include <csignal>

#include "platform/diagnostics/diagnosticscommclient.h"
#include "platform/log/log.h"
#include "platform/log/logconfigservice.h"
#include "platform/rpc/interfaces/diagnostics.h"
#include "platform/rpc/interfaces/logconfig.h"
#include "platform/rpc/interfaces/meter.h"
#include "platform/rpc/interfaces/sessionmanager.h"
#include "platform/sysfs/pathsysfsaccess.h"
#include "src/components/connector.h"
#include "src/components/ledcontrol.h"
#include "src/hal/led.h"

namespace {

constexpr int kConnector = 1;
constexpr int kMeterTimeLimitSeconds = 5;
constexpr const char* kLogService = "FeedbackLog";

std::shared_ptr<CLed> CreateLed(const std::string& directory) {
  return std::make_shared<CLed>(std::make_shared<CPathSysfsAccess>(directory));
}

void WaitForInterrupt() {
  sigset_t interrupt;
  sigemptyset(&interrupt);
  sigaddset(&interrupt, SIGINT);
  int signal = 0;
  while (sigwait(&interrupt, &signal) != 0 || signal != SIGINT) {
  }
}

}  // namespace

CFeedback::CFeedback(const std::string& root) {
  mWorker = std::make_shared<CWorker>();
  mHost = std::make_shared<AppCommunicationHost<GrpcBackend>>(root + "etc/ovra.json");
  // Before the hardware is touched: where another process serves already, its lamp stays as it is.
  mHost->Reserve(kLogService);

  mDiagnostics = mHost->CreateClient<IDiagnostics>("Diagnostics")->GetInterface();
  const auto meterClient = mHost->CreateClient<IMeter>("Meter1");
  meterClient->SetTimeLimit(kMeterTimeLimitSeconds);
  mMeters.push_back(meterClient->GetInterface());
  const auto sessionManager = mHost->CreateClient<ISessionManager>("SessionManager");

  const auto red = CreateLed("/sys/class/leds/kelo:red:top/");
  const auto green = CreateLed("/sys/class/leds/kelo:green:top/");
  const auto blue = CreateLed("/sys/class/leds/kelo:blue:top/");
  const auto ledControl = std::make_shared<CLedControl>(red, green, blue);
  mConnectors.push_back(std::make_shared<CConnector>(std::make_shared<CConnectorPrefix>(kConnector),
                                                     ledControl, sessionManager->GetInterface(),
                                                     mWorker));

  ConnectIDiagnostics();
  mHost->AddService<ILogConfig>(kLogService, Log::CreateLogConfigService());
}

CFeedback::~CFeedback() {
  mDiagnostics->SetNotificationCallback({});
}

void CFeedback::ConnectIDiagnostics() const {
  mDiagnostics->SetNotificationCallback(
      [connectors = mConnectors](const ipc::MDiagnosticsSignal& signal,
                                 const ipc::MDiagnosticsNotificationType& type) {
        if (type.type() == ipc::MDiagnosticsNotificationType::EError) {
          for (const auto& connector : connectors) {
            if (signal.data(0).bool_value()) {
              connector->AddError(signal.identifier());
            } else {
              connector->RemoveError(signal.identifier());
            }
          }
        }
        return ipc::MResult();
      });
}

void CFeedback::Run() {
  CDiagnosticsCommClient::Initialize(*mHost);
  mHost->StartServices();
  mWorker->Start();
  mServerThread = std::thread([this] { mHost->RunServer(); });
  mNotificationThread = std::thread([this] { mHost->HandleClientNotifications(); });
  for (const auto& connector : mConnectors) {
    connector->Enable();
  }

  WaitForInterrupt();

  CDiagnosticsCommClient::Terminate();
  mHost->Stop();
  mServerThread.join();
  mNotificationThread.join();
}
