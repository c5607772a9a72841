#include "platform/rpc/interfaces/genericcontrol.h"

#include "platform/ipc/genericcontrol.grpc.pb.h"
#include "platform/rpc/adapters/adapters.h"
#include "platform/rpc/adapters/serve.h"
#include "platform/rpc/adapters/stub.h"
#include "platform/rpc/adapters/subscriber.h"
#include "platform/rpc/servicestream.h"

namespace Rpc {
namespace {

// The requests block until the process has decided, so they run on gRPC's synchronous threads; the
// streams are for any number of watchers and cost none.
using GenericControlBase = ipc::GenericControl::WithCallbackMethod_WatchState<
    ipc::GenericControl::WithCallbackMethod_WatchAlive<ipc::GenericControl::Service>>;

class CGenericControlAdapter final : public GenericControlBase {
 public:
  explicit CGenericControlAdapter(std::shared_ptr<IGenericControl> service)
      : mService(std::move(service)) {
    mService->ConnectReporters(
        [states = mStates](const ipc::MState& state) { states->Publish(state); },
        [alive = mAlive] { alive->Publish({}); });
  }

  grpc::Status Enable(grpc::ServerContext*, const ipc::MEmpty* request,
                      ipc::MResult* response) override {
    return Serve("Enable", *request, response, [&] { return mService->Enable(); });
  }

  grpc::Status Disable(grpc::ServerContext*, const ipc::MEmpty* request,
                       ipc::MResult* response) override {
    return Serve("Disable", *request, response, [&] { return mService->Disable(); });
  }

  grpc::ServerWriteReactor<ipc::MState>* WatchState(grpc::CallbackServerContext*,
                                                    const ipc::MEmpty*) override {
    return new CPlainStream<ipc::MState>(mStates);
  }

  grpc::ServerWriteReactor<ipc::MAlive>* WatchAlive(grpc::CallbackServerContext*,
                                                    const ipc::MEmpty*) override {
    return new CPlainStream<ipc::MAlive>(mAlive);
  }

 private:
  const std::shared_ptr<IGenericControl> mService;
  const std::shared_ptr<CPublisher<ipc::MState>> mStates =
      std::make_shared<CPublisher<ipc::MState>>(
          [](const ipc::MState&, const ipc::MState&) { return true; });
  const std::shared_ptr<CPublisher<ipc::MAlive>> mAlive = std::make_shared<CPublisher<ipc::MAlive>>(
      [](const ipc::MAlive&, const ipc::MAlive&) { return true; }, false);
};

class CGenericControlClient final : public IGenericControl {
 public:
  CGenericControlClient(const std::shared_ptr<CClientContext>& context,
                        const std::shared_ptr<CServiceChannel>& channel)
      : mStub(channel),
        mStates(context, channel, "/ipc.GenericControl/WatchState"),
        mAlive(context, channel, "/ipc.GenericControl/WatchAlive") {}

  ipc::MResult Enable() override {
    return mStub.Call("Enable", &ipc::GenericControl::Stub::Enable, ipc::MEmpty());
  }

  ipc::MResult Disable() override {
    return mStub.Call("Disable", &ipc::GenericControl::Stub::Disable, ipc::MEmpty());
  }

  void ReportState(const ipc::MState& state) override {
    if (mStateReporter) {
      mStateReporter(state);
    }
  }

  void SendAlive() override { mAliveReporter(); }

  void ConnectReporters(StateReporter stateReporter, AliveReporter aliveReporter) override {
    IGenericControl::ConnectReporters(std::move(stateReporter), std::move(aliveReporter));
    mStates.Begin([this](const ipc::MState& state, ipc::MEmpty&) { ReportState(state); });
    if (mAliveReporter) {
      mAlive.Begin([this](const ipc::MAlive&, ipc::MEmpty&) { SendAlive(); });
    }
  }

 private:
  CStub<ipc::GenericControl> mStub;
  CSubscriber<ipc::MEmpty, ipc::MState> mStates;
  CSubscriber<ipc::MEmpty, ipc::MAlive> mAlive;
};

}  // namespace

std::unique_ptr<grpc::Service> MakeService(std::shared_ptr<IGenericControl> service) {
  return std::make_unique<CGenericControlAdapter>(std::move(service));
}

template <>
std::shared_ptr<IGenericControl> MakeClient(const std::shared_ptr<CClientContext>& context,
                                            const std::shared_ptr<CServiceChannel>& channel) {
  return std::make_shared<CGenericControlClient>(context, channel);
}

}  // namespace Rpc
