#include "platform/rpc/interfaces/diagnostics.h"

#include "platform/ipc/diagnostics.grpc.pb.h"
#include "platform/rpc/adapters/adapters.h"
#include "platform/rpc/adapters/callbackslot.h"
#include "platform/rpc/adapters/replylimit.h"
#include "platform/rpc/adapters/serve.h"
#include "platform/rpc/adapters/stub.h"
#include "platform/rpc/adapters/subscriber.h"
#include "platform/rpc/servicestream.h"

namespace Rpc {
namespace {

using DiagnosticsNotifications = CPublisher<ipc::MDiagnosticsNotification>;

bool IsSameSignal(const ipc::MDiagnosticsNotification& a, const ipc::MDiagnosticsNotification& b) {
  return a.signal().identifier() == b.signal().identifier() &&
         a.signal().instance().instance() == b.signal().instance().instance() &&
         a.type().type() == b.type().type();
}

class CDiagnosticsAdapter final
    : public ipc::Diagnostics::WithCallbackMethod_Notifications<ipc::Diagnostics::Service> {
 public:
  explicit CDiagnosticsAdapter(std::shared_ptr<IDiagnostics> service)
      : mService(std::move(service)) {
    mService->SetNotificationCallback(
        [notifications = mNotifications](const ipc::MDiagnosticsSignal& signal,
                                         ipc::MDiagnosticsNotificationType type) {
          ipc::MDiagnosticsNotification notification;
          *notification.mutable_signal() = signal;
          *notification.mutable_type() = std::move(type);
          ipc::MResult result;
          if (!notifications->Publish(notification)->Wait(kReplyLimit, result)) {
            result.set_result(ipc::EResultIllegal);
            result.set_text("a subscriber did not reply in time");
          }
          return result;
        });
  }

  grpc::Status SendSignal(grpc::ServerContext*, const ipc::MDiagnosticsSignal* request,
                          ipc::MResult* response) override {
    return Serve("SendSignal", *request, response, [&] { return mService->SendSignal(*request); });
  }

  grpc::Status ReceiveSignal(grpc::ServerContext*, const ipc::MDiagnosticsRequest* request,
                             ipc::MDiagnosticsSignal* response) override {
    return Serve("ReceiveSignal", *request, response,
                 [&] { return mService->ReceiveSignal(*request); });
  }

  grpc::ServerBidiReactor<ipc::MNotificationReply, ipc::MDiagnosticsNotification>* Notifications(
      grpc::CallbackServerContext*) override {
    return new CRepliedStream<ipc::MDiagnosticsNotification>(mNotifications);
  }

 private:
  const std::shared_ptr<IDiagnostics> mService;
  const std::shared_ptr<DiagnosticsNotifications> mNotifications =
      std::make_shared<DiagnosticsNotifications>(&IsSameSignal, true,
                                                 [service = std::weak_ptr(mService)](size_t count) {
                                                   if (const auto owner = service.lock()) {
                                                     owner->OnSubscribers(count);
                                                   }
                                                 });
};

class CDiagnosticsClient final : public IDiagnostics {
 public:
  CDiagnosticsClient(const std::shared_ptr<CClientContext>& context,
                     const std::shared_ptr<CServiceChannel>& channel)
      : mStub(channel), mNotifications(context, channel, "/ipc.Diagnostics/Notifications") {}

  ipc::MResult SendSignal(const ipc::MDiagnosticsSignal& signal) override {
    return mStub.Call("SendSignal", &ipc::Diagnostics::Stub::SendSignal, signal);
  }

  ipc::MDiagnosticsSignal ReceiveSignal(const ipc::MDiagnosticsRequest& request) override {
    return mStub.Call("ReceiveSignal", &ipc::Diagnostics::Stub::ReceiveSignal, request);
  }

  void SetNotificationCallback(NotificationCallback callback) override {
    const bool wanted = static_cast<bool>(callback);
    mCallback.Set(std::move(callback));
    if (wanted) {
      mNotifications.Begin([this](const ipc::MDiagnosticsNotification& notification,
                                  ipc::MNotificationReply& reply) {
        *reply.mutable_result() = mCallback.Call(notification.signal(), notification.type());
      });
    }
  }

 private:
  CStub<ipc::Diagnostics> mStub;
  CCallbackSlot<NotificationCallback> mCallback;
  CSubscriber<ipc::MNotificationReply, ipc::MDiagnosticsNotification> mNotifications;
};

}  // namespace

std::unique_ptr<grpc::Service> MakeService(std::shared_ptr<IDiagnostics> service) {
  return std::make_unique<CDiagnosticsAdapter>(std::move(service));
}

template <>
std::shared_ptr<IDiagnostics> MakeClient(const std::shared_ptr<CClientContext>& context,
                                         const std::shared_ptr<CServiceChannel>& channel) {
  return std::make_shared<CDiagnosticsClient>(context, channel);
}

}  // namespace Rpc
