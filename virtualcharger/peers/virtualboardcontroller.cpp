#include "virtualcharger/peers/virtualboardcontroller.h"

#include <fmt/format.h>

#include <functional>
#include <utility>

#include "platform/rpc/communicationexception.h"
#include "utils/controltext.h"

namespace {

constexpr auto kControl = "FeedbackGenCtrl";

std::string Outcome(CWireLog::CMessage message, const std::function<ipc::MResult()>& ask) {
  try {
    const auto result = ask();
    message.End(result);
    if (result.result() == ipc::EResultOk) return std::string(kOutcomeOk);
    return fmt::format("{} {}", kOutcomeRefused, result.text());
  } catch (const Rpc::CommunicationException& exception) {
    message.End(exception.what(), false);
    return fmt::format("{} {}", kOutcomeUnreachable, exception.what());
  }
}

}  // namespace

CVirtualBoardController::CVirtualBoardController(std::shared_ptr<IGenericControl> control,
                                                 std::shared_ptr<IFeedback> feedback,
                                                 std::shared_ptr<ILogConfig> log, PeerEvents events)
    : mEvents(std::move(events)),
      mWire("board-controller", mEvents),
      mControl(std::move(control)),
      mFeedback(std::move(feedback)),
      mLog(std::move(log)) {
  mControl->ConnectReporters(
      [this](const ipc::MState& state) {
        mWire.Report(kControl, "WatchState", StateToString(state));
        mEvents(fmt::format("state {}", static_cast<int>(state.state())));
      },
      [this] {
        mWire.Report(kControl, "WatchAlive", "alive");
        mEvents(fmt::format("alive {}", ++mAlive));
      });
}

std::string CVirtualBoardController::Enable() {
  return Outcome(mWire.Call(kControl, "Enable"), [this] { return mControl->Enable(); });
}

std::string CVirtualBoardController::Disable() {
  return Outcome(mWire.Call(kControl, "Disable"), [this] { return mControl->Disable(); });
}

std::string CVirtualBoardController::Trigger(int event) {
  ipc::MFbEventType type;
  type.set_event(static_cast<ipc::EFbEventType>(event));
  ipc::MInstanceType connector;
  connector.set_instance(ipc::EInstanceTypeConnector1);
  return Outcome(mWire.Call("Feedback", "TriggerFeedbackEvent",
                            fmt::format("{} ({})", FbEventTypeToString(type), event)),
                 [&] { return mFeedback->TriggerFeedbackEvent(type, connector); });
}

std::string CVirtualBoardController::SetLogLevel(int level) {
  ipc::MLogConfig config;
  config.set_level(static_cast<ipc::ELogLevel>(level));
  return Outcome(mWire.Call("FeedbackLog", "SetLogConfig", fmt::format("level {}", level)),
                 [&] { return mLog->SetLogConfig(config); });
}
