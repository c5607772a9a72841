// A client of one named service.
#pragma once

#include <memory>

namespace Rpc {

// Threads: all operations, those of the interface object too, may be called from any thread.
template <typename Interface>
class IClient {
 public:
  virtual ~IClient() = default;

  // The service's operations as an object; it keeps the connection as long as somebody holds it.
  virtual std::shared_ptr<Interface> GetInterface() = 0;

  // How long a call may take before it fails, in seconds, 1 or more. The default is 2.
  virtual void SetTimeLimit(int seconds) = 0;
};

}  // namespace Rpc
