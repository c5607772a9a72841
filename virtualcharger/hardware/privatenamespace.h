// A mount namespace of this process's own, in which the virtual hardware takes the place of the
// machine's without anyone else seeing it.
#pragma once

#include <optional>
#include <string>
#include <vector>

// A small memory file system of the namespace's own is mounted here. Any folder will do that exists
// wherever FUSE does and that nobody inside needs.
inline constexpr auto kScratchFolder = "/sys/fs/fuse/connections";

// Enters the namespace, for good: as a user who may mount, or in a user namespace with the own user
// and group. To be called while the process has one thread. Returns the error's text, one line with
// the remedy; the process may then be half inside and only go on without hardware.
[[nodiscard]] std::optional<std::string> EnterPrivateNamespace();

struct SBinding {
  std::string source;  // relative to the file system's root
  std::string target;  // absolute; its parent must exist
  bool directory = true;
};

// Mounts sources over their targets, and takes the mounts away again. Where a target is missing,
// its parent folder is replaced by one in memory that has it, and everything that was there.
class CBindings {
 public:
  CBindings() = default;
  CBindings(const CBindings&) = delete;
  CBindings& operator=(const CBindings&) = delete;
  ~CBindings();

  // Inside the private namespace. Returns the error's text.
  [[nodiscard]] std::optional<std::string> Bind(const std::string& root,
                                                const std::vector<SBinding>& bindings);

 private:
  std::optional<std::string> AddToParent(const SBinding& binding);

  std::vector<std::string> mMounts;
};
