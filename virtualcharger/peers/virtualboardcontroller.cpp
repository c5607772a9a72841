#include "virtualcharger/peers/virtualboardcontroller.h"

#include <fmt/format.h>

#include <functional>
#include <utility>

#include "platform/rpc/communicationexception.h"

namespace {

std::string Outcome(const std::function<ipc::MResult()>& ask) {
  try {
    const auto result = ask();
    if (result.result() == ipc::EResultOk) return std::string(kOutcomeOk);
    return fmt::format("{} {}", kOutcomeRefused, result.text());
  } catch (const Rpc::CommunicationException& exception) {
    return fmt::format("{} {}", kOutcomeUnreachable, exception.what());
  }
}

}  // namespace

CVirtualBoardController::CVirtualBoardController(std::shared_ptr<IGenericControl> control,
                                                 std::shared_ptr<IFeedback> feedback,
                                                 PeerEvents events)
    : mEvents(std::move(events)), mControl(std::move(control)), mFeedback(std::move(feedback)) {
  mControl->ConnectReporters(
      [this](const ipc::MState& state) {
        mEvents(fmt::format("state {}", static_cast<int>(state.state())));
      },
      [this] { mEvents(fmt::format("alive {}", ++mAlive)); });
}

std::string CVirtualBoardController::Enable() {
  return Outcome([this] { return mControl->Enable(); });
}

std::string CVirtualBoardController::Disable() {
  return Outcome([this] { return mControl->Disable(); });
}

std::string CVirtualBoardController::Trigger(int event) {
  ipc::MFbEventType type;
  type.set_event(static_cast<ipc::EFbEventType>(event));
  ipc::MInstanceType connector;
  connector.set_instance(ipc::EInstanceTypeConnector1);
  return Outcome([&] { return mFeedback->TriggerFeedbackEvent(type, connector); });
}
