#include "platform/rpc/interfaces/feedback.h"

#include "platform/ipc/feedback.grpc.pb.h"
#include "platform/rpc/adapters/adapters.h"
#include "platform/rpc/adapters/serve.h"
#include "platform/rpc/adapters/stub.h"

namespace Rpc {
namespace {

class CFeedbackAdapter final : public ipc::Feedback::Service {
 public:
  explicit CFeedbackAdapter(std::shared_ptr<IFeedback> service) : mService(std::move(service)) {}

  grpc::Status TriggerFeedbackEvent(grpc::ServerContext*, const ipc::MFeedbackEvent* request,
                                    ipc::MResult* response) override {
    return Serve("TriggerFeedbackEvent", *request, response, [&] {
      return mService->TriggerFeedbackEvent(request->type(), request->instance());
    });
  }

 private:
  const std::shared_ptr<IFeedback> mService;
};

class CFeedbackClient final : public IFeedback {
 public:
  explicit CFeedbackClient(std::shared_ptr<CServiceChannel> channel) : mStub(std::move(channel)) {}

  ipc::MResult TriggerFeedbackEvent(const ipc::MFbEventType& event,
                                    const ipc::MInstanceType& instance) override {
    ipc::MFeedbackEvent request;
    *request.mutable_type() = event;
    *request.mutable_instance() = instance;
    return mStub.Call("TriggerFeedbackEvent", &ipc::Feedback::Stub::TriggerFeedbackEvent, request);
  }

 private:
  CStub<ipc::Feedback> mStub;
};

}  // namespace

std::unique_ptr<grpc::Service> MakeService(std::shared_ptr<IFeedback> service) {
  return std::make_unique<CFeedbackAdapter>(std::move(service));
}

template <>
std::shared_ptr<IFeedback> MakeClient(const std::shared_ptr<CClientContext>&,
                                      const std::shared_ptr<CServiceChannel>& channel) {
  return std::make_shared<CFeedbackClient>(channel);
}

}  // namespace Rpc
