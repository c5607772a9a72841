// The one exception of the RPC layer.
#pragma once

#include <stdexcept>

namespace Rpc {

// A peer cannot be reached, did not answer in time or refused the request, or a service cannot be
// offered. The text names the service, the operation and the reason.
class CommunicationException : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace Rpc
