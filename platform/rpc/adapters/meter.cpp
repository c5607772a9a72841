#include "platform/rpc/interfaces/meter.h"

#include "platform/ipc/meter.grpc.pb.h"
#include "platform/rpc/adapters/adapters.h"
#include "platform/rpc/adapters/serve.h"
#include "platform/rpc/adapters/stub.h"

namespace Rpc {
namespace {

class CMeterAdapter final : public ipc::Meter::Service {
 public:
  explicit CMeterAdapter(std::shared_ptr<IMeter> service) : mService(std::move(service)) {}

  grpc::Status SetDisplayBrightness(grpc::ServerContext*, const ipc::MDisplayBrightness* request,
                                    ipc::MResult* response) override {
    return Serve("SetDisplayBrightness", *request, response,
                 [&] { return mService->SetDisplayBrightness(*request); });
  }

 private:
  const std::shared_ptr<IMeter> mService;
};

class CMeterClient final : public IMeter {
 public:
  explicit CMeterClient(std::shared_ptr<CServiceChannel> channel) : mStub(std::move(channel)) {}

  ipc::MResult SetDisplayBrightness(const ipc::MDisplayBrightness& brightness) override {
    return mStub.Call("SetDisplayBrightness", &ipc::Meter::Stub::SetDisplayBrightness, brightness);
  }

 private:
  CStub<ipc::Meter> mStub;
};

}  // namespace

std::unique_ptr<grpc::Service> MakeService(std::shared_ptr<IMeter> service) {
  return std::make_unique<CMeterAdapter>(std::move(service));
}

template <>
std::shared_ptr<IMeter> MakeClient(const std::shared_ptr<CClientContext>&,
                                   const std::shared_ptr<CServiceChannel>& channel) {
  return std::make_shared<CMeterClient>(channel);
}

}  // namespace Rpc
