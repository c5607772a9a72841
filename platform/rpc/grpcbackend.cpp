#include "platform/rpc/grpcbackend.h"

#include <grpc/grpc.h>
#include <grpcpp/grpcpp.h>
#include <grpcpp/health_check_service_interface.h>
#include <grpcpp/resource_quota.h>
#include <grpcpp/server_posix.h>

#include <chrono>
#include <cstdlib>
#include <future>
#include <mutex>
#include <utility>
#include <vector>

#include "platform/rpc/acceptor.h"
#include "platform/rpc/adapters/adapters.h"
#include "platform/rpc/bordercheck.h"
#include "platform/rpc/clientcontext.h"
#include "platform/rpc/communicationconfig.h"
#include "platform/rpc/communicationexception.h"
#include "platform/rpc/log.h"
#include "platform/rpc/servicechannel.h"

namespace {

using namespace std::chrono_literals;

// Requests block a thread each until the state machine has decided.
constexpr int kMostThreads = 96;
constexpr int kMostCallsAConnection = 32;
constexpr auto kStopGrace = 100ms;

// A connection without a call makes room for others; its client opens a new one when it needs it.
constexpr int kIdleMilliseconds = 5'000;

// When its last object has gone, gRPC clears up on a thread of its own, which nobody waits for and
// which would still run while the end of the process takes away what it uses. This reference goes
// last, and its end is waited for.
void KeepGrpcUntilTheEnd() {
  static std::once_flag once;
  std::call_once(once, [] {
    grpc_init();
    std::atexit(grpc_shutdown_blocking);
  });
}

template <typename Interface>
class CClient final : public Rpc::IClient<Interface> {
 public:
  CClient(std::shared_ptr<Rpc::CServiceChannel> channel, std::shared_ptr<Interface> interface)
      : mChannel(std::move(channel)), mInterface(std::move(interface)) {}

  std::shared_ptr<Interface> GetInterface() override { return mInterface; }

  void SetTimeLimit(int seconds) override { mChannel->SetTimeLimit(std::chrono::seconds(seconds)); }

 private:
  const std::shared_ptr<Rpc::CServiceChannel> mChannel;
  const std::shared_ptr<Interface> mInterface;
};

}  // namespace

class GrpcBackend::CImplementation {
 public:
  explicit CImplementation(const std::string& configPath)
      : mConfig(Rpc::ReadCommunicationConfig(configPath)),
        mClients(std::make_shared<Rpc::CClientContext>(mConfig.socketDirectory)),
        mAcceptor(mConfig, [this](CDescriptor connection) {
          grpc::AddInsecureChannelFromFd(mServer.get(), connection.Release());
        }) {
    KeepGrpcUntilTheEnd();
  }

  ~CImplementation() { Stop(); }

  template <typename Interface>
  void Register(const std::string& name, std::shared_ptr<Interface> service) {
    mServices.push_back({name, Rpc::MakeService(std::move(service))});
  }

  void Reserve(const std::string& name) { mAcceptor.Reserve(name); }

  void StartServices() {
    if (mServices.empty()) {
      return;
    }
    grpc::EnableDefaultHealthCheckService(true);
    grpc::ServerBuilder builder;
    for (const auto& service : mServices) {
      builder.RegisterService(service.adapter.get());
    }
    builder.SetSyncServerOption(grpc::ServerBuilder::NUM_CQS, 1);
    builder.SetResourceQuota(grpc::ResourceQuota("requests").SetMaxThreads(kMostThreads));
    builder.SetMaxReceiveMessageSize(Rpc::kMessageLimit);
    builder.AddChannelArgument(GRPC_ARG_MAX_CONCURRENT_STREAMS, kMostCallsAConnection);
    builder.AddChannelArgument(GRPC_ARG_MAX_CONNECTION_IDLE_MS, kIdleMilliseconds);
    builder.AddChannelArgument(GRPC_ARG_KEEPALIVE_PERMIT_WITHOUT_CALLS, 1);
    builder.AddChannelArgument(GRPC_ARG_HTTP2_MIN_RECV_PING_INTERVAL_WITHOUT_DATA_MS, 5'000);
    mServer = builder.BuildAndStart();
    if (!mServer) {
      throw Rpc::CommunicationException(
          "The services cannot be started: gRPC refused them; is one interface registered twice?");
    }
    for (const auto& service : mServices) {
      mAcceptor.Reserve(service.name);
    }
    mAcceptor.Listen();
    for (const auto& service : mServices) {
      mServer->GetHealthCheckService()->SetServingStatus(service.name, true);
      Rpc::Write(&Rpc::ILogger::Info, "Serving \"{}\" in {}", service.name,
                 mConfig.socketDirectory);
    }
  }

  void RunServer() { mAcceptor.Run(); }

  void HandleClientNotifications() { mClients->Queue()->Run(); }

  void PrepareStop() { mClients->PrepareStop(); }

  void Stop() {
    mAcceptor.Stop();
    mClients->Stop();
    if (mServer) {
      // A peer that does not read keeps its cancelled stream open; its connection is cut then.
      auto ended = std::async(std::launch::async, [this] {
        mServer->Shutdown(std::chrono::system_clock::now() + kStopGrace);
      });
      while (ended.wait_for(2 * kStopGrace) != std::future_status::ready) {
        mAcceptor.Disconnect();
      }
    }
  }

  const std::shared_ptr<Rpc::CClientContext>& Clients() const { return mClients; }

 private:
  struct Service {
    std::string name;
    std::unique_ptr<grpc::Service> adapter;
  };

  const Rpc::CommunicationConfig mConfig;
  const std::shared_ptr<Rpc::CClientContext> mClients;
  std::vector<Service> mServices;
  std::unique_ptr<grpc::Server> mServer;
  Rpc::CAcceptor mAcceptor;
};

void GrpcBackend::SetLogger(std::shared_ptr<Rpc::ILogger> logger) {
  Rpc::SetLogger(std::move(logger));
}

GrpcBackend::GrpcBackend(const std::string& configPath)
    : mImplementation(std::make_unique<CImplementation>(configPath)) {}

GrpcBackend::~GrpcBackend() = default;

void GrpcBackend::Reserve(const std::string& name) {
  mImplementation->Reserve(name);
}
void GrpcBackend::StartServices() {
  mImplementation->StartServices();
}
void GrpcBackend::RunServer() {
  mImplementation->RunServer();
}
void GrpcBackend::HandleClientNotifications() {
  mImplementation->HandleClientNotifications();
}
void GrpcBackend::PrepareStop() {
  mImplementation->PrepareStop();
}
void GrpcBackend::Stop() {
  mImplementation->Stop();
}

void GrpcBackend::Register(const std::string& name, std::shared_ptr<IGenericControl> service) {
  mImplementation->Register(name, std::move(service));
}
void GrpcBackend::Register(const std::string& name, std::shared_ptr<ILogConfig> service) {
  mImplementation->Register(name, std::move(service));
}
void GrpcBackend::Register(const std::string& name, std::shared_ptr<IFeedback> service) {
  mImplementation->Register(name, std::move(service));
}
void GrpcBackend::Register(const std::string& name, std::shared_ptr<IDiagnostics> service) {
  mImplementation->Register(name, std::move(service));
}
void GrpcBackend::Register(const std::string& name, std::shared_ptr<ISessionManager> service) {
  mImplementation->Register(name, std::move(service));
}
void GrpcBackend::Register(const std::string& name, std::shared_ptr<IMeter> service) {
  mImplementation->Register(name, std::move(service));
}

template <typename Interface>
std::shared_ptr<Rpc::IClient<Interface>> GrpcBackend::Connect(const std::string& name) {
  const auto& clients = mImplementation->Clients();
  auto channel = clients->Channel(name);
  auto interface = Rpc::MakeClient<Interface>(clients, channel);
  return std::make_shared<CClient<Interface>>(std::move(channel), std::move(interface));
}

template std::shared_ptr<Rpc::IClient<IGenericControl>> GrpcBackend::Connect(const std::string&);
template std::shared_ptr<Rpc::IClient<ILogConfig>> GrpcBackend::Connect(const std::string&);
template std::shared_ptr<Rpc::IClient<IFeedback>> GrpcBackend::Connect(const std::string&);
template std::shared_ptr<Rpc::IClient<IDiagnostics>> GrpcBackend::Connect(const std::string&);
template std::shared_ptr<Rpc::IClient<ISessionManager>> GrpcBackend::Connect(const std::string&);
template std::shared_ptr<Rpc::IClient<IMeter>> GrpcBackend::Connect(const std::string&);
