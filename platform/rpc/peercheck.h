// Who is at the other end of a Unix socket, and whether it may be.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace Rpc {

struct Peer {
  pid_t pid = 0;
  uid_t user = 0;
  std::vector<gid_t> groups;  // the primary one first
};

// As the kernel noted it when the peer connected (SO_PEERCRED and SO_PEERGROUPS of socket(7)).
// False where the kernel does not say.
bool IdentifyPeer(int descriptor, Peer& peer);

// Root, this process's own user, the users given, and members of the group.
bool IsAllowed(const Peer& peer, const std::vector<uid_t>& users, gid_t group);

}  // namespace Rpc
