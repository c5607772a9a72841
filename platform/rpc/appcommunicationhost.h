// The RPC host of one application: what offers its services and opens its clients.
#pragma once

#include <memory>
#include <string>
#include <utility>

#include "platform/rpc/client.h"
#include "platform/rpc/grpcbackend.h"

template <typename Backend>
class AppCommunicationHost : public Backend {
 public:
  explicit AppCommunicationHost(const std::string& configPath) : Backend(configPath) {}

  // Offers the service under the name from StartServices on. Called before it.
  template <typename Interface>
  void AddService(const std::string& name, std::shared_ptr<Interface> service) {
    Backend::Register(name, std::move(service));
  }

  // A client of the service of that name. Never fails for a service that is not there yet: its
  // calls do, and its subscription begins when the service appears.
  template <typename Interface>
  std::shared_ptr<Rpc::IClient<Interface>> CreateClient(const std::string& name) {
    return Backend::template Connect<Interface>(name);
  }
};
