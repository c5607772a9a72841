// The listening Unix socket of one named service.
//
// An exclusive lock file beside the socket says who serves the name: a second process is refused
// with a message that names the holder. A socket file without a living listener (its process was
// killed) is replaced; one on which somebody answers never is.
#pragma once

#include <sys/types.h>

#include <string>

#include "platform/os/descriptor.h"

namespace Rpc {

// Threads: one at a time.
class CServiceSocket {
 public:
  // Takes the name for this process: creates the directory where it is missing and takes the lock.
  // Nobody can connect yet. Throws CommunicationException naming the service, the path and the
  // holder or the system's reason.
  CServiceSocket(const std::string& directory, const std::string& name);

  // Removes the socket file, if it is still this one, and the lock file.
  ~CServiceSocket();
  CServiceSocket(const CServiceSocket&) = delete;
  CServiceSocket& operator=(const CServiceSocket&) = delete;

  // Binds and listens, again too, when the file has gone. Throws as the constructor does.
  void Listen();

  // Whether the path still leads to this listener.
  bool IsInPlace() const;

  const std::string& Name() const { return mName; }

  // -1 until Listen.
  int Descriptor() const { return mListener.Get(); }

  // The group whose members may connect: that of the socket file.
  gid_t Group() const { return mGroup; }

 private:
  void TakeLock();
  void RemoveLock();
  void RefuseLiveListener() const;

  const std::string mName;
  const std::string mPath;
  const std::string mLockPath;
  CDescriptor mLock;
  CDescriptor mListener;
  gid_t mGroup = 0;
  ino_t mInode = 0;
};

// The path of a named service's socket; throws CommunicationException where the name cannot be a
// file name or the path is too long for a socket address.
std::string ServiceSocketPath(const std::string& directory, const std::string& name);

}  // namespace Rpc
