// What joins the service interfaces to the wire: for each one an adapter at the serving end (a gRPC
// service around the process's object) and one at the calling end (the interface on a channel).
//
// Adding a service: its .proto file, its interface, its checks in bordercheck.h, its adapter file
// here, and its two lines below.
#pragma once

#include <memory>

namespace grpc {
class Service;
}

class IDiagnostics;
class IFeedback;
class IGenericControl;
class ILogConfig;
class IMeter;
class ISessionManager;

namespace Rpc {

class CClientContext;
class CServiceChannel;

std::unique_ptr<grpc::Service> MakeService(std::shared_ptr<IGenericControl> service);
std::unique_ptr<grpc::Service> MakeService(std::shared_ptr<ILogConfig> service);
std::unique_ptr<grpc::Service> MakeService(std::shared_ptr<IFeedback> service);
std::unique_ptr<grpc::Service> MakeService(std::shared_ptr<IDiagnostics> service);
std::unique_ptr<grpc::Service> MakeService(std::shared_ptr<ISessionManager> service);
std::unique_ptr<grpc::Service> MakeService(std::shared_ptr<IMeter> service);

// The context outlives its clients' calls; see clientcontext.h.
template <typename Interface>
std::shared_ptr<Interface> MakeClient(const std::shared_ptr<CClientContext>& context,
                                      const std::shared_ptr<CServiceChannel>& channel);

}  // namespace Rpc
