// A directory of the test's own that goes with it.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::string pattern = (std::filesystem::temp_directory_path() / "feedback-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
      throw std::runtime_error("cannot create " + pattern);
    }
    mPath = pattern;
  }
  ~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(mPath, ignored);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  const std::filesystem::path& Path() const { return mPath; }

  std::string WriteFile(const std::string& name, std::string_view text) const {
    const auto path = mPath / name;
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path) << text;
    return path.string();
  }

  std::string ReadFile(const std::string& name) const {
    std::ifstream file(mPath / name);
    return {std::istreambuf_iterator<char>(file), {}};
  }

 private:
  std::filesystem::path mPath;
};
