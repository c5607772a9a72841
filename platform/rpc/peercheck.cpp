#include "platform/rpc/peercheck.h"

#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace Rpc {

bool IdentifyPeer(int descriptor, Peer& peer) {
  ucred credentials{};
  socklen_t size = sizeof(credentials);
  if (getsockopt(descriptor, SOL_SOCKET, SO_PEERCRED, &credentials, &size) != 0) {
    return false;
  }
  peer.pid = credentials.pid;
  peer.user = credentials.uid;
  peer.groups = {credentials.gid};

  std::vector<gid_t> groups(64);
  for (int attempt = 0; attempt < 2; ++attempt) {
    size = static_cast<socklen_t>(groups.size() * sizeof(gid_t));
    if (getsockopt(descriptor, SOL_SOCKET, SO_PEERGROUPS, groups.data(), &size) == 0) {
      groups.resize(size / sizeof(gid_t));
      peer.groups.insert(peer.groups.end(), groups.begin(), groups.end());
      break;
    }
    if (errno != ERANGE) {
      break;
    }
    groups.resize(size / sizeof(gid_t));  // the kernel said how many there are
  }
  return true;
}

bool IsAllowed(const Peer& peer, const std::vector<uid_t>& users, gid_t group) {
  const auto contains = [](const auto& list, auto value) {
    return std::find(list.begin(), list.end(), value) != list.end();
  };
  return peer.user == 0 || peer.user == geteuid() || contains(users, peer.user) ||
         contains(peer.groups, group);
}

}  // namespace Rpc
