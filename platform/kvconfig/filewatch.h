// Waits for changes of one file, however it is changed: written, replaced, linked, renamed,
// removed.
//
// Watches every name that the path leads through in the directory where it stands: the directories
// above the file, symbolic links, and what those lead to. So the file may come and go with its
// directories, and nothing wakes while nothing on its path changes.
#pragma once

#include <chrono>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>

#include "platform/os/descriptor.h"

namespace KvConfig {

// Threads: Stop from any thread; everything else from one at a time.
class CFileWatch {
 public:
  enum class EResult { EChanged, ETimeout, EStopped };

  // Changes from here on are heard. Where the system has no watch to give, that is logged and none
  // is heard. Throws std::system_error where it has not even a descriptor.
  explicit CFileWatch(const std::filesystem::path& path);

  // Several changes may come as one. Without a limit it waits for as long as it takes.
  EResult Wait(std::optional<std::chrono::milliseconds> limit);

  // Every Wait returns EStopped from now on.
  void Stop();

 private:
  void Arm();
  bool TakeEvents();
  void Log(const std::string& failure);

  const std::filesystem::path mPath;
  const CDescriptor mInotify;
  const CDescriptor mStop;
  std::map<int, std::set<std::string>> mNames;  // by the watch of the directory they stand in
  std::string mLogged;
};

}  // namespace KvConfig
