// The scenarios that can be played on the desk.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

class CLibrary {
 public:
  struct SEntry {
    std::string name;  // "story"
    std::string text;  // the file's first comment
    std::filesystem::path path;
  };

  // Beside the program where it is installed, else in the tree that it was built from; empty where
  // there is none.
  explicit CLibrary(const std::filesystem::path& programFolder);

  const std::vector<SEntry>& Entries() const { return mEntries; }
  // Null for another name.
  const SEntry* Find(const std::string& name) const;

 private:
  std::vector<SEntry> mEntries;
};
