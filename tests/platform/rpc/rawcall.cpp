#include "tests/platform/rpc/rawcall.h"

#include <grpcpp/create_channel.h>
#include <grpcpp/generic/generic_stub.h>
#include <grpcpp/security/credentials.h>

#include <future>

bool CallWithBytes(const std::string& socketPath, const std::string& method,
                   const std::string& bytes) {
  grpc::GenericStub stub(
      grpc::CreateChannel("unix:" + socketPath, grpc::InsecureChannelCredentials()));
  const grpc::Slice slice(bytes);
  const grpc::ByteBuffer request(&slice, 1);
  grpc::ByteBuffer response;
  grpc::ClientContext context;
  std::promise<bool> answered;
  stub.UnaryCall(&context, method, {}, &request, &response,
                 [&](const grpc::Status& status) { answered.set_value(status.ok()); });
  return answered.get_future().get();
}
