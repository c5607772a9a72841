#include <fmt/chrono.h>
#include <fmt/format.h>

#include <mutex>
#include <utility>

#include "platform/rpc/communicationexception.h"
#include "platform/rpc/interfaces/diagnostics.h"
#include "platform/rpc/interfaces/genericcontrol.h"
#include "platform/rpc/interfaces/logconfig.h"
#include "tools/feedbackctl/commands.h"
#include "tools/feedbackctl/services.h"
#include "tools/feedbackctl/storecheck.h"
#include "tools/feedbackctl/watchview.h"
#include "utils/controltext.h"
#include "utils/signalcatalogue.h"
#include "utils/words.h"

namespace {

using std::chrono::steady_clock;

// Diagnostics keeps these values but tells nobody when they change; and a daemon that is gone says
// nothing.
constexpr auto kInterval = std::chrono::milliseconds(250);

std::string Now() {
  const auto now = std::chrono::floor<std::chrono::milliseconds>(std::chrono::system_clock::now());
  return fmt::format("{:%FT%T}.{:03}Z", fmt::gmtime(std::chrono::system_clock::to_time_t(now)),
                     now.time_since_epoch().count() % 1000);
}

// Keeps what is known and shows what changes. Threads: any.
class CWatched {
 public:
  CWatched(std::ostream& out, std::unique_ptr<IWatchView> view)
      : mOut(out), mView(std::move(view)) {}

  void Tell(const std::string& kind, const Json::Value& value) {
    const std::lock_guard lock(mMutex);
    const auto known = mNow.values.find(kind);
    if (known != mNow.values.end() && known->second == value) {
      return;
    }
    mNow.values[kind] = value;
    Show(kind, value);
  }

  void TellAlive() {
    const std::lock_guard lock(mMutex);
    ++mNow.alive;
    Show("alive", {});
  }

  bool HaveReader() const {
    const std::lock_guard lock(mMutex);
    return mOut.good();
  }

 private:
  void Show(const std::string& kind, const Json::Value& value) {
    const SChange change{Now(), kind, value};
    if (kind != "alive" && kind != "light") {
      mNow.last = change;
    }
    mView->Show(change, mNow);
  }

  mutable std::mutex mMutex;
  // Guarded by mMutex:
  std::ostream& mOut;
  const std::unique_ptr<IWatchView> mView;
  SWatched mNow;
};

Json::Value ValueOf(const ipc::MDiagnosticsSignal& signal) {
  const auto& data = signal.data(0);
  switch (data.value_case()) {
    case ipc::MDiagnosticsData::kStringValue:
      return data.string_value();
    case ipc::MDiagnosticsData::kBoolValue:
      return data.bool_value() ? "on" : "off";
    case ipc::MDiagnosticsData::kFloatValue:
      return data.float_value();
    default:
      return {};
  }
}

// What nobody tells by itself. What cannot be asked for a moment has not changed.
class CQuestions {
 public:
  CQuestions(CServices& services, CWatched& watched)
      : mServices(services),
        mWatched(watched),
        mLog(services.Client<ILogConfig>(kLogService)),
        mDiagnostics(services.Client<IDiagnostics>(kDiagnosticsService)) {}

  void Ask() {
    AskDaemon();
    AskSignal("lamp", Signals::LedState.identifier);
    AskSignal("buzzer", Signals::BuzzerState.identifier);
    AskSignal("light", Signals::LightIntensity.identifier);
  }

 private:
  // Each failure is cheap after the first one of a daemon that hangs; the reason is not.
  void AskDaemon() {
    try {
      mLog->GetLogConfig();
      mWatched.Tell("daemon", "answers");
      mIsThere = true;
    } catch (const Rpc::CommunicationException&) {
      if (std::exchange(mIsThere, false)) {
        const auto why = mServices.WhyNoAnswer(kLogService);
        mWatched.Tell("daemon",
                      fmt::format("not there{}{}; waiting for it", why.empty() ? "" : ": ", why));
      }
    }
  }

  void AskSignal(const char* kind, ipc::ESignalIdentifier identifier) {
    if (const auto signal = LastSignal(*mDiagnostics, identifier)) {
      mWatched.Tell(kind, ValueOf(*signal));
    }
  }

  CServices& mServices;
  CWatched& mWatched;
  const std::shared_ptr<ILogConfig> mLog;
  const std::shared_ptr<IDiagnostics> mDiagnostics;
  bool mIsThere = true;
};

// When --for ends it.
steady_clock::time_point End(const CInvocation& invocation) {
  if (!invocation.Has("--for")) {
    return steady_clock::time_point::max();
  }
  const auto word = invocation.Option("--for", "");
  if (const auto time = ParseTime(word)) {
    return steady_clock::now() + *time;
  }
  throw CUsageError(fmt::format("--for: \"{}\" is not {} (an hour at most)", word, kExpectedTime));
}

}  // namespace

int RunWatch(const CInvocation& invocation, const CTool& tool) {
  const auto end = End(invocation);
  if (tool.isInterrupted({})) {
    return kDone;
  }
  for (const auto& problem : CommunicationProblems(invocation.Store())) {
    tool.err << fmt::format("feedbackctl: {}\n", problem);
  }
  // What breaks and is renewed is shown as the daemon's going and coming.
  GrpcBackend::SetLogger(nullptr);
  CWatched watched(tool.out, MakeWatchView(invocation, tool));
  CServices services(invocation);
  const auto control = services.Client<IGenericControl>(kControlService);
  control->ConnectReporters(
      [&](const ipc::MState& state) { watched.Tell("state", StateToString(state)); },
      [&] { watched.TellAlive(); });
  CQuestions questions(services, watched);
  auto wait = std::chrono::milliseconds(0);
  do {
    questions.Ask();
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - steady_clock::now());
    wait = std::clamp(left, std::chrono::milliseconds(0), kInterval);
  } while (!tool.isInterrupted(wait) && watched.HaveReader() && steady_clock::now() < end);
  return kDone;
}
