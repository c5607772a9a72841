#include "platform/rpc/interfaces/logconfig.h"

#include "platform/ipc/logconfig.grpc.pb.h"
#include "platform/rpc/adapters/adapters.h"
#include "platform/rpc/adapters/serve.h"
#include "platform/rpc/adapters/stub.h"

namespace Rpc {
namespace {

class CLogConfigAdapter final : public ipc::LogConfig::Service {
 public:
  explicit CLogConfigAdapter(std::shared_ptr<ILogConfig> service) : mService(std::move(service)) {}

  grpc::Status SetLogConfig(grpc::ServerContext*, const ipc::MLogConfig* request,
                            ipc::MResult* response) override {
    return Serve("SetLogConfig", *request, response,
                 [&] { return mService->SetLogConfig(*request); });
  }

  grpc::Status GetLogConfig(grpc::ServerContext*, const ipc::MEmpty* request,
                            ipc::MLogConfig* response) override {
    return Serve("GetLogConfig", *request, response, [&] { return mService->GetLogConfig(); });
  }

 private:
  const std::shared_ptr<ILogConfig> mService;
};

class CLogConfigClient final : public ILogConfig {
 public:
  explicit CLogConfigClient(std::shared_ptr<CServiceChannel> channel) : mStub(std::move(channel)) {}

  ipc::MResult SetLogConfig(const ipc::MLogConfig& config) override {
    return mStub.Call("SetLogConfig", &ipc::LogConfig::Stub::SetLogConfig, config);
  }

  ipc::MLogConfig GetLogConfig() override {
    return mStub.Call("GetLogConfig", &ipc::LogConfig::Stub::GetLogConfig, ipc::MEmpty());
  }

 private:
  CStub<ipc::LogConfig> mStub;
};

}  // namespace

std::unique_ptr<grpc::Service> MakeService(std::shared_ptr<ILogConfig> service) {
  return std::make_unique<CLogConfigAdapter>(std::move(service));
}

template <>
std::shared_ptr<ILogConfig> MakeClient(const std::shared_ptr<CClientContext>&,
                                       const std::shared_ptr<CServiceChannel>& channel) {
  return std::make_shared<CLogConfigClient>(channel);
}

}  // namespace Rpc
