// The store's section "communication": where the sockets are and who may use them.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>
#include <vector>

namespace Rpc {

struct CommunicationConfig {
  // Key "SocketDirectory": created when missing. An absolute path.
  std::string socketDirectory = "/run/ovra";

  // Key "AllowedUsers", a list of user names or numbers: who may connect besides root, this
  // process's own user and the members of the socket's group.
  std::vector<uid_t> allowedUsers;

  // Key "MaxConnections", 1 to 1024: connections to all services of this process together.
  size_t maxConnections = 64;
};

// Reads the section. A missing file or key means the default. A broken file or a value that does
// not fit is reported through the RPC log, naming file, section, key, found and expected, and means
// the default too: the process must come up to report its configuration error.
CommunicationConfig ReadCommunicationConfig(const std::string& path);

}  // namespace Rpc
