// One unary request at the calling end.
//
// Only for platform/rpc: includes gRPC.
#pragma once

#include <grpcpp/client_context.h>

#include <memory>
#include <string>
#include <utility>

#include "platform/rpc/bordercheck.h"
#include "platform/rpc/communicationexception.h"
#include "platform/rpc/servicechannel.h"

namespace Rpc {

// Service is the generated class of a service.
template <typename Service>
class CStub {
 public:
  explicit CStub(std::shared_ptr<CServiceChannel> channel)
      : mChannel(std::move(channel)), mStub(Service::NewStub(mChannel->Channel())) {}

  // Throws CommunicationException where the call fails or the answer makes no sense.
  template <typename Request, typename Response>
  Response Call(const char* operation,
                grpc::Status (Service::Stub::*method)(grpc::ClientContext*, const Request&,
                                                      Response*),
                const Request& request) {
    Response response;
    mChannel->Call(operation, [&](grpc::ClientContext& context) {
      return (mStub.get()->*method)(&context, request, &response);
    });
    if (const std::string error = Check(response); !error.empty()) {
      throw CommunicationException(std::string(operation) + " of \"" + mChannel->Name() +
                                   "\" was answered with nonsense: " + error);
    }
    return response;
  }

  const std::shared_ptr<CServiceChannel>& Channel() const { return mChannel; }

 private:
  const std::shared_ptr<CServiceChannel> mChannel;
  const std::unique_ptr<typename Service::Stub> mStub;
};

}  // namespace Rpc
