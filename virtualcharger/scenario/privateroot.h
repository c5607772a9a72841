// The charger's file tree for one run: the daemon's store, the sockets and the log files.
#pragma once

#include <string>
#include <utility>

#include "platform/os/descriptor.h"

class CPrivateRoot {
 public:
  // A new folder under $XDG_RUNTIME_DIR or /tmp, with the store in it. Removes what runs of this
  // user that were killed have left there. Throws std::runtime_error.
  CPrivateRoot();
  CPrivateRoot(const CPrivateRoot&) = delete;
  CPrivateRoot& operator=(const CPrivateRoot&) = delete;

  // Removes it, unless it is to be kept.
  ~CPrivateRoot();

  // The store as it is at the beginning, or with this text. Throws std::runtime_error.
  void WriteStore() const;
  void WriteStore(const std::string& text) const;

  // Also when the next runs look for leftovers.
  void Keep();
  bool IsKept() const { return mKeep; }

  // Without a slash at the end.
  const std::string& Path() const { return mPath; }
  std::string Sockets() const { return mPath + "/run"; }
  std::string StoreFolder() const { return mPath + "/etc"; }
  std::string Store() const { return mPath + "/etc/ovra.json"; }
  std::string Log(const std::string& process) const { return mPath + '/' + process + ".log"; }

 private:
  explicit CPrivateRoot(std::string path) : mPath(std::move(path)) {}

  const std::string mPath;
  CDescriptor mLock;  // of a file in it: held as long as this run lives
  bool mKeep = false;
};
