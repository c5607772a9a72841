#include "virtualcharger/peers/virtualsessionmanager.h"

#include <utility>

#include "platform/rpc/communicationexception.h"

namespace {

ipc::MConnectorState Message(int state) {
  ipc::MConnectorState message;
  message.set_state(static_cast<ipc::EConnectorState>(state));
  return message;
}

}  // namespace

CVirtualSessionManager::CVirtualSessionManager(int state, PeerEvents events)
    : mEvents(std::move(events)), mState(state) {}

ipc::MConnectorInfo CVirtualSessionManager::GetConnectorInfo(const ipc::MInstanceType&) {
  ipc::MConnectorInfo info;
  *info.mutable_state() = Message(mState);
  return info;
}

ipc::MResult CVirtualSessionManager::Authorize(const ipc::MAuthorizeRequest& request) {
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
}

std::string CVirtualSessionManager::SetConnectorState(int state) {
  const std::lock_guard lock(mMutex);
  mState = state;
  mEvents("connector " + std::to_string(state));
  const bool nobody = mSubscribers == 0;
  try {
    if (mTellSubscribers) {
      mTellSubscribers(Message(state));
    }
  } catch (const Rpc::CommunicationException&) {
    return std::string(kOutcomeLate);
  }
  return std::string(nobody ? kOutcomeNobody : kOutcomeOk);
}
