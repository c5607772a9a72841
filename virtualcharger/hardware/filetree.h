// What one top-level name of the virtual hardware's file system holds: a tree of folders and
// attribute files, or a single file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Paths are relative to the tree, without a leading slash; the tree's own is empty. Errors are
// errno values, 0 for none.
//
// Threads: called from several at once; a call may block without holding up the others.
class IFileTree {
 public:
  struct SNode {
    bool directory;
    bool writable;
  };

  virtual ~IFileTree() = default;

  virtual std::optional<SNode> Look(const std::string& path) = 0;
  virtual std::vector<std::string> List(const std::string& path) = 0;

  // Whether opening would succeed.
  virtual int Probe(const std::string& path, bool forWriting) = 0;
  // The handle goes with every use of what was opened.
  virtual int Open(const std::string& path, bool forWriting, std::uint64_t& handle) = 0;
  virtual int Read(const std::string& path, std::uint64_t handle, std::string& text) = 0;
  // Accepted is the number of bytes taken, set on success.
  virtual int Write(const std::string& path, std::uint64_t handle, std::string_view text,
                    std::size_t& accepted) = 0;
  // An ioctl whose argument is a plain number.
  virtual int Control(const std::string& path, unsigned request, std::uintptr_t argument) = 0;

  // Lets calls that block return, for good.
  virtual void Close() = 0;
};
