// Serves file trees as one file system in user space.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "virtualcharger/hardware/filetree.h"

class CFuseServer {
 public:
  // By their names in the file system's root.
  using Trees = std::map<std::string, std::shared_ptr<IFileTree>>;

  explicit CFuseServer(Trees trees);
  CFuseServer(const CFuseServer&) = delete;
  CFuseServer& operator=(const CFuseServer&) = delete;

  // Closes the trees, unmounts and joins; who still uses the file system gets errors.
  ~CFuseServer();

  // Mounts and begins to serve, on threads of its own; called once. Returns the error's text. The
  // mount point must exist, and this process must be allowed to mount and to open /dev/fuse.
  [[nodiscard]] std::optional<std::string> Start(const std::string& mountPoint);

 private:
  class CSession;

  const std::unique_ptr<CSession> mSession;
};
