// One unary request at the serving end: checked, handed to the service, answered.
//
// Only for platform/rpc: includes gRPC.
#pragma once

#include <grpcpp/support/status.h>

#include <exception>
#include <future>
#include <string>

#include "platform/rpc/bordercheck.h"
#include "platform/rpc/communicationexception.h"
#include "platform/rpc/log.h"

namespace Rpc {

// Nothing that a peer sends and nothing that a service throws gets past this.
template <typename Request, typename Response, typename Operation>
grpc::Status Serve(const char* name, const Request& request, Response* response,
                   const Operation& operation) {
  if (const std::string error = Check(request); !error.empty()) {
    Write(&ILogger::Warning, "Refused {}: {}", name, error);
    return {grpc::StatusCode::INVALID_ARGUMENT, error};
  }
  try {
    *response = operation();
    return grpc::Status::OK;
  } catch (const CommunicationException& exception) {
    return {grpc::StatusCode::NOT_FOUND, exception.what()};
  } catch (const std::future_error&) {
    return {grpc::StatusCode::UNAVAILABLE, "the process is stopping"};
  } catch (const std::exception& exception) {
    Write(&ILogger::Error, "{} failed: {}", name, exception.what());
    return {grpc::StatusCode::INTERNAL, exception.what()};
  }
}

}  // namespace Rpc
