#include "platform/rpc/interfaces/sessionmanager.h"

#include "platform/ipc/sessionmanager.grpc.pb.h"
#include "platform/rpc/adapters/adapters.h"
#include "platform/rpc/adapters/callbackslot.h"
#include "platform/rpc/adapters/replylimit.h"
#include "platform/rpc/adapters/serve.h"
#include "platform/rpc/adapters/stub.h"
#include "platform/rpc/adapters/subscriber.h"
#include "platform/rpc/servicestream.h"

namespace Rpc {
namespace {

class CSessionManagerAdapter final
    : public ipc::SessionManager::WithCallbackMethod_ConnectorStates<ipc::SessionManager::Service> {
 public:
  explicit CSessionManagerAdapter(std::shared_ptr<ISessionManager> service)
      : mService(std::move(service)) {
    mService->SetConnectorStateCallback([states = mStates](const ipc::MConnectorState& state) {
      ipc::MConnectorStateNotification notification;
      *notification.mutable_state() = state;
      ipc::MResult result;
      if (!states->Publish(notification)->Wait(kReplyLimit, result)) {
        throw CommunicationException("A subscriber did not reply to a connector state in time");
      }
    });
  }

  grpc::Status GetConnectorInfo(grpc::ServerContext*, const ipc::MInstanceType* request,
                                ipc::MConnectorInfo* response) override {
    return Serve("GetConnectorInfo", *request, response,
                 [&] { return mService->GetConnectorInfo(*request); });
  }

  grpc::Status Authorize(grpc::ServerContext*, const ipc::MAuthorizeRequest* request,
                         ipc::MResult* response) override {
    return Serve("Authorize", *request, response, [&] { return mService->Authorize(*request); });
  }

  grpc::ServerBidiReactor<ipc::MNotificationReply, ipc::MConnectorStateNotification>*
  ConnectorStates(grpc::CallbackServerContext*) override {
    return new CRepliedStream<ipc::MConnectorStateNotification>(mStates);
  }

 private:
  const std::shared_ptr<ISessionManager> mService;
  const std::shared_ptr<CPublisher<ipc::MConnectorStateNotification>> mStates =
      std::make_shared<CPublisher<ipc::MConnectorStateNotification>>(
          [](const auto&, const auto&) { return true; }, true,
          [service = std::weak_ptr(mService)](size_t count) {
            if (const auto owner = service.lock()) {
              owner->OnSubscribers(count);
            }
          });
};

class CSessionManagerClient final : public ISessionManager {
 public:
  CSessionManagerClient(const std::shared_ptr<CClientContext>& context,
                        const std::shared_ptr<CServiceChannel>& channel)
      : mStub(channel), mStates(context, channel, "/ipc.SessionManager/ConnectorStates") {}

  ipc::MConnectorInfo GetConnectorInfo(const ipc::MInstanceType& instance) override {
    return mStub.Call("GetConnectorInfo", &ipc::SessionManager::Stub::GetConnectorInfo, instance);
  }

  ipc::MResult Authorize(const ipc::MAuthorizeRequest& request) override {
    return mStub.Call("Authorize", &ipc::SessionManager::Stub::Authorize, request);
  }

  void SetConnectorStateCallback(ConnectorStateCallback callback) override {
    const bool wanted = static_cast<bool>(callback);
    mCallback.Set(std::move(callback));
    if (wanted) {
      mStates.Begin([this](const ipc::MConnectorStateNotification& notification,
                           ipc::MNotificationReply& reply) {
        mCallback.Call(notification.state());
        reply.mutable_result()->set_result(ipc::EResultOk);
      });
    }
  }

 private:
  CStub<ipc::SessionManager> mStub;
  CCallbackSlot<ConnectorStateCallback> mCallback;
  CSubscriber<ipc::MNotificationReply, ipc::MConnectorStateNotification> mStates;
};

}  // namespace

std::unique_ptr<grpc::Service> MakeService(std::shared_ptr<ISessionManager> service) {
  return std::make_unique<CSessionManagerAdapter>(std::move(service));
}

template <>
std::shared_ptr<ISessionManager> MakeClient(const std::shared_ptr<CClientContext>& context,
                                            const std::shared_ptr<CServiceChannel>& channel) {
  return std::make_shared<CSessionManagerClient>(context, channel);
}

}  // namespace Rpc
