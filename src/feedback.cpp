#include "src/feedback.h"

#include <fmt/core.h>

#include <csignal>
#include <functional>

#include "platform/diagnostics/diagnosticscommclient.h"
#include "platform/kvconfig/kvconfig.h"
#include "platform/log/log.h"
#include "platform/log/logconfigservice.h"
#include "platform/rpc/interfaces/diagnostics.h"
#include "platform/rpc/interfaces/logconfig.h"
#include "platform/rpc/interfaces/meter.h"
#include "platform/rpc/interfaces/sessionmanager.h"
#include "platform/sysfs/pathsysfsaccess.h"
#include "src/components/brightnesscontrol.h"
#include "src/components/connector.h"
#include "src/components/feedbackconfig.h"
#include "src/components/ledcontrol.h"
#include "src/hal/buzzer.h"
#include "src/hal/led.h"
#include "src/hal/opt3001.h"
#include "src/interrupt.h"
#include "src/stopguard.h"
#include "utils/servicenames.h"

namespace {

using namespace std::chrono_literals;

constexpr int kConnector = 1;
constexpr int kMeter = 1;
constexpr int kMeterTimeLimitSeconds = 5;

constexpr const char* kProcessControlName = "FeedbackGenCtrl";
constexpr const char* kLogConfigName = "FeedbackLog";
constexpr const char* kFeedbackName = "Feedback";

std::shared_ptr<CLed> CreateLed(const std::string& directory) {
  return std::make_shared<CLed>(std::make_shared<CPathSysfsAccess>(directory));
}

}  // namespace

CFeedback::CFeedback(const std::string& root) {
  mWorker = std::make_shared<CWorker>();
  mWorker->Start();
  const std::string configPath = root + "etc/ovra.json";
  mHost = std::make_shared<AppCommunicationHost<GrpcBackend>>(configPath);
  // Before the hardware is touched: where another process serves already, its lamp stays as it is.
  for (const char* name : {kProcessControlName, kLogConfigName, kFeedbackName}) {
    mHost->Reserve(name);
  }
  mProcessControlService = std::make_shared<CProcessControlService>();
  mFeedbackService = std::make_shared<CFeedbackService>();

  mDiagnostics = mHost->CreateClient<IDiagnostics>("Diagnostics")->GetInterface();
  const auto meterClient = mHost->CreateClient<IMeter>(GetMeterServiceName(kMeter));
  meterClient->SetTimeLimit(kMeterTimeLimitSeconds);
  mMeters.push_back(meterClient->GetInterface());
  const auto sessionManager = mHost->CreateClient<ISessionManager>("SessionManager");

  const auto red = CreateLed("/sys/class/leds/kelo:red:top/");
  const auto green = CreateLed("/sys/class/leds/kelo:green:top/");
  const auto blue = CreateLed("/sys/class/leds/kelo:blue:top/");
  const auto ledControl = std::make_shared<CLedControl>(red, green, blue);
  const auto connector =
      std::make_shared<CConnector>(std::make_shared<CConnectorPrefix>(kConnector), ledControl,
                                   sessionManager->GetInterface(), mWorker);
  const auto brightnessControl = std::make_shared<CBrightnessControl>();
  const auto lightSensor =
      std::make_shared<COpt3001>("/var/sysfs-links/light", EIntegrationTime::E800Milliseconds,
                                 2000ms, std::make_shared<CSysfsAccess>(), 3000, 80000);
  const auto buzzer =
      std::make_shared<CBuzzer>(std::make_shared<CPathSysfsAccess>("/var/sysfs-links/beeper/"));

  KvConfig::SetStore(configPath);
  const auto onConfigError = [errors = mConfigErrors](const std::string& error) {
    errors->Handle(error);
  };
  const std::shared_ptr<KvConfig::IConfig> settings(
      KvConfig::Create(Settings::kSection, onConfigError, {}));
  const std::shared_ptr<KvConfig::IReadOnlyConfig> hardware(
      KvConfig::CreateReadOnly(Settings::kHardwareSection, onConfigError, true));

  mActionHandler = std::make_shared<CFeedbackHsmActionHandler>(
      std::vector<std::shared_ptr<ILedControl>>{ledControl},
      std::vector<std::shared_ptr<IConnector>>{connector}, brightnessControl, lightSensor, buzzer,
      settings, hardware, std::make_shared<CFeedbackConfig>(), mMeters);
  mMachine = std::make_shared<Machine>(mActionHandler);
  mConfigErrors->SetMachine(mMachine);

  mBridge = ConnectIProcessControl(mActionHandler, mProcessControlService,
                                   std::shared_ptr<IHsmInterface>(mMachine));
  ConnectIDiagnostics();
  ConnectIFeedback();

  mHost->AddService<IGenericControl>(kProcessControlName, mProcessControlService);
  mHost->AddService<ILogConfig>(kLogConfigName, Log::CreateLogConfigService());
  mHost->AddService<IFeedback>(kFeedbackName, mFeedbackService);
}

CFeedback::~CFeedback() {
  // What holds the machine lets go of it, so that all objects end here and the tone is off.
  mDiagnostics->SetNotificationCallback({});
  mFeedbackService->SetEventCallback({});
}

void CFeedback::ConnectIDiagnostics() const {
  mDiagnostics->SetNotificationCallback(
      [machine = mMachine](const ipc::MDiagnosticsSignal& signal,
                           const ipc::MDiagnosticsNotificationType& type) {
        switch (type.type()) {
          case ipc::MDiagnosticsNotificationType::EError:
            return PostAndWait<IntOnErrorChanged>(*machine, signal);
          case ipc::MDiagnosticsNotificationType::EWarning:
          case ipc::MDiagnosticsNotificationType::ECriticalSecurityEvent:
            LOG(Debug,
                "(src/feedback:175) DiagnosticsNotification EWarning or ECriticalSecurityEvent "
                "received and ignored. (only listens to EError)");
            break;
          default:
            LOG(Warning,
                "(src/feedback:180) DiagnosticsNotification unexpected notification type "
                "received.");
        }
        return ipc::MResult();
      });
}

void CFeedback::ConnectIFeedback() const {
  mFeedbackService->SetEventCallback(
      [machine = mMachine](const ipc::MFbEventType& event, const ipc::MInstanceType& instance) {
        return PostAndWait<ExtOnTriggerFeedbackEvent>(*machine, event, instance);
      });
}

void CFeedback::Run() {
  mConfigErrors->WhileUnreported([this] { CDiagnosticsCommClient::Initialize(*mHost); });
  mHost->StartServices();
  mServerThread = std::thread([this] { mHost->RunServer(); });
  mNotificationThread = std::thread([this] { mHost->HandleClientNotifications(); });
  mConfigErrors->ReportPending();
  RunStateMachine();
  Stop();
}

void CFeedback::RunStateMachine() const {
  StopGuard::SetFarewell([this] {
    mMachine->DropQueuedEvents();
    mHost->Stop();
  });
  LOG(Info, "(src/feedback:226) Starting state machine");
  Interrupt::SetHook([this](int signal) {
    if (signal == SIGINT) {
      StopGuard::Start();
      mMachine->PostEvent(std::make_shared<IntTerminate>());
      // The machine may be waiting for a peer that hangs.
      mHost->PrepareStop();
    }
  });
  mMachine->Run();
  StopGuard::SetFarewell({});
  Interrupt::RemoveHook();
  LOG(Info, "(src/feedback:230) State machine stopped");
}

void CFeedback::Stop() {
  mProcessControlService.reset();
  // Requests that came too late wait for a verdict that the machine will not give any more.
  mMachine->DropQueuedEvents();
  CDiagnosticsCommClient::Terminate();
  mHost->Stop();
  mServerThread.join();
  mNotificationThread.join();
  mBridge.reset();
}
