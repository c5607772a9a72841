#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "platform/kvconfig/storefile.h"
#include "platform/os/descriptor.h"

namespace KvConfig {
namespace {

constexpr int kLinkLimit = 40;  // as the kernel's

[[noreturn]] void Fail(const std::string& text, const std::string& path) {
  throw std::runtime_error(path + ": " + text + ": " + Detail::ErrnoText());
}

// A file beside the store that becomes the store, or goes without a trace.
class CReplacement {
 public:
  explicit CReplacement(const std::filesystem::path& store)
      : mPath(store.parent_path() / fmt::format(".{}.XXXXXX", store.filename().string())),
        mFile(mkostemp(mPath.data(), O_CLOEXEC)) {
    if (!mFile) {
      Fail("cannot create a file beside the store", mPath);
    }
  }
  ~CReplacement() {
    if (mFile) {
      unlink(mPath.c_str());
    }
  }
  CReplacement(const CReplacement&) = delete;
  CReplacement& operator=(const CReplacement&) = delete;

  void Write(std::string_view text) {
    while (!text.empty()) {
      const ssize_t size = write(mFile.Get(), text.data(), text.size());
      if (size > 0) {
        text.remove_prefix(static_cast<size_t>(size));
      } else if (size == 0 || errno != EINTR) {
        Fail("cannot write", mPath);
      }
    }
  }

  // The owner first: changing it may take mode bits away.
  void TakeOver(const struct stat& old) {
    struct stat own {};
    if (fstat(mFile.Get(), &own) != 0 ||
        ((own.st_uid != old.st_uid || own.st_gid != old.st_gid) &&
         fchown(mFile.Get(), old.st_uid, old.st_gid) != 0) ||
        fchmod(mFile.Get(), old.st_mode & 07777) != 0) {
      Fail("cannot keep the store's owner and mode", mPath);
    }
  }

  void Become(const std::filesystem::path& store) {
    if (fsync(mFile.Get()) != 0) {
      Fail("cannot write to the disk", mPath);
    }
    if (rename(mPath.c_str(), store.c_str()) != 0) {
      Fail("cannot replace the store", store);
    }
    mFile.Reset();
  }

 private:
  std::string mPath;
  CDescriptor mFile;
};

// A link stays a link, also one that leads nowhere yet: what it leads to is the store.
std::filesystem::path BehindLinks(std::filesystem::path path) {
  for (int links = 0; links < kLinkLimit && std::filesystem::is_symlink(path); ++links) {
    path = path.parent_path() / std::filesystem::read_symlink(path);
  }
  return path;
}

Json::Value With(Json::Value root, const std::string& path, const std::string& section,
                 const std::string& key, const Json::Value& value) {
  const Json::Value& old = std::as_const(root)[section];
  if (!old.isNull() && !old.isObject()) {
    throw std::runtime_error(fmt::format("{}: section \"{}\" is not an object", path, section));
  }
  if (!value.isNull()) {
    root[section][key] = value;
  } else if (old.isObject()) {
    root[section].removeMember(key);
  }
  return root;
}

std::string TextOf(const Json::Value& root) {
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "  ";
  builder["emitUTF8"] = true;
  std::string text = Json::writeString(builder, root) + "\n";
  Detail::ParseStore(text);  // what no reader would take is not written
  return text;
}

}  // namespace

void WriteStore(const std::string& path, const std::string& section, const std::string& key,
                const Json::Value& value) {
  const std::filesystem::path store = BehindLinks(path);
  const CDescriptor directory(
      open(store.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!directory || flock(directory.Get(), LOCK_EX) != 0) {
    Fail("cannot lock the store's directory", store.parent_path());
  }

  struct stat old {};
  old.st_uid = geteuid();
  old.st_gid = getegid();
  old.st_mode = 0644;
  StoreContent content;
  content.root = std::make_shared<const Json::Value>(Json::objectValue);
  if (stat(store.c_str(), &old) == 0) {
    content = ReadStore(store);
  } else if (errno != ENOENT) {
    Fail("cannot look at the store", store);
  }
  if (!content.root) {
    throw std::runtime_error(content.error);
  }
  const std::string text = TextOf(With(*content.root, store, section, key, value));

  CReplacement replacement(store);
  replacement.Write(text);
  replacement.TakeOver(old);
  replacement.Become(store);
  if (fsync(directory.Get()) != 0) {
    Fail("changed, but a loss of power may undo it", store);
  }
}

}  // namespace KvConfig
