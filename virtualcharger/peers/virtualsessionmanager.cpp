#include "virtualcharger/peers/virtualsessionmanager.h"

#include <fmt/format.h>

#include <string_view>
#include <utility>

#include "platform/rpc/communicationexception.h"
#include "utils/connectortext.h"

namespace {

ipc::MConnectorState Message(int state) {
  ipc::MConnectorState message;
  message.set_state(static_cast<ipc::EConnectorState>(state));
  return message;
}

constexpr auto kService = "SessionManager";
constexpr auto kNotification = "ConnectorStates";

// "Charging (6)".
std::string Words(int state) {
  const std::string_view prefix = "EConnectorState";
  auto name = ConnectorStateToString(static_cast<ipc::EConnectorState>(state));
  if (name.starts_with(prefix)) name.erase(0, prefix.size());
  return fmt::format("{} ({})", name.empty() ? "unknown" : name, state);
}

}  // namespace

CVirtualSessionManager::CVirtualSessionManager(int state, PeerEvents events)
    : mEvents(std::move(events)), mWire("session-manager", mEvents), mState(state) {}

ipc::MConnectorInfo CVirtualSessionManager::GetConnectorInfo(const ipc::MInstanceType&) {
  auto message = mWire.Called(kService, "GetConnectorInfo");
  message.End(Words(mState));
  ipc::MConnectorInfo info;
  *info.mutable_state() = Message(mState);
  return info;
}

ipc::MResult CVirtualSessionManager::Authorize(const ipc::MAuthorizeRequest& request) {
  mWire.Called(kService, "Authorize", request.id_token()).End(ipc::MResult());
  mEvents("authorize " + request.id_token());
  return {};
}

void CVirtualSessionManager::SetConnectorStateCallback(ConnectorStateCallback callback) {
  const std::lock_guard lock(mMutex);
  mTellSubscribers = std::move(callback);
  if (mTellSubscribers) {
    mTellSubscribers(Message(mState));  // nobody is subscribed yet: it is kept for the first one
  }
}

void CVirtualSessionManager::OnSubscribers(std::size_t count) {
  mSubscribers = count;
  mEvents("subscribers " + std::to_string(count));
  mWire.Subscribers(kService, kNotification, count);
}

std::string CVirtualSessionManager::SetConnectorState(int state) {
  const std::lock_guard lock(mMutex);
  mState = state;
  mEvents("connector " + std::to_string(state));
  const bool nobody = mSubscribers == 0;
  auto message = mWire.Notification(kService, kNotification, "connector " + Words(state));
  try {
    if (mTellSubscribers) {
      mTellSubscribers(Message(state));
    }
  } catch (const Rpc::CommunicationException&) {
    message.End("no reply in time", false);
    return std::string(kOutcomeLate);
  }
  message.End(nobody ? "nobody is subscribed" : "Ok", !nobody);
  return std::string(nobody ? kOutcomeNobody : kOutcomeOk);
}
