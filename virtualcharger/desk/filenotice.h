// Wakes when files change.
#pragma once

#include <set>
#include <string>

#include "platform/os/descriptor.h"

// Threads: one.
class CFileNotice {
 public:
  // Throws std::system_error.
  CFileNotice();

  // A file that grows, or a folder in which something is written, replaced, made or removed, as the
  // folder itself may be. Throws std::system_error.
  int Add(const std::string& path);

  // Readable when something changed.
  int Descriptor() const { return mInotify.Get(); }

  // What changed since the last time, as Add numbered it.
  std::set<int> Take();

 private:
  const CDescriptor mInotify;
};
