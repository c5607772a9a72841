#include "platform/kvconfig/storefile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <stdexcept>
#include <system_error>

#include "platform/os/descriptor.h"

namespace KvConfig {
namespace {

constexpr size_t kSizeLimit = 1024UL * 1024;
constexpr int kDepthLimit = 32;
constexpr size_t kShownLimit = 80;   // of a value, in a message
constexpr size_t kErrorLimit = 200;  // of the parser's words, which quote the text

[[noreturn]] void Refuse(const std::string& reason) {
  throw std::runtime_error("not a valid store: " + reason);
}

bool IsForbidden(char character) {
  const auto code = static_cast<unsigned char>(character);
  return code < ' ' && character != '\n' && character != '\r' && character != '\t';
}

void CheckRegular(mode_t mode) {
  if (S_ISREG(mode)) {
    return;
  }
  const char* kind = S_ISDIR(mode)    ? "a directory"
                     : S_ISFIFO(mode) ? "a FIFO"
                     : S_ISSOCK(mode) ? "a socket"
                                      : "a device";
  Refuse(fmt::format("it is not a regular file but {}", kind));
}

[[noreturn]] void ThrowNotOpened(const std::string& path) {
  auto reason = "cannot open the store: " + Detail::ErrnoText();
  struct stat status {};
  if (stat(path.c_str(), &status) == 0) {
    CheckRegular(status.st_mode);  // a socket cannot be opened
  } else if (lstat(path.c_str(), &status) == 0 && S_ISLNK(status.st_mode)) {
    reason += ", where the link leads that stands in its place";
  }
  throw std::runtime_error(reason);
}

std::string ReadText(const std::string& path) {
  // Neither a pipe nor a terminal in the store's place may hold the process up.
  const CDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (!file) {
    ThrowNotOpened(path);
  }
  struct stat status {};
  if (fstat(file.Get(), &status) != 0) {
    throw std::runtime_error("cannot read the store: " + Detail::ErrnoText());
  }
  CheckRegular(status.st_mode);
  std::string text;
  std::array<char, 16UL * 1024> buffer;
  for (;;) {
    const ssize_t size = read(file.Get(), buffer.data(), buffer.size());
    if (size == 0) {
      return text;
    }
    if (size > 0) {
      text.append(buffer.data(), static_cast<size_t>(size));
    } else if (errno != EINTR) {
      throw std::runtime_error("cannot read the store: " + Detail::ErrnoText());
    }
    if (text.size() > kSizeLimit) {
      return text;
    }
  }
}

}  // namespace

namespace Detail {

std::string ErrnoText() {
  return std::generic_category().message(errno);
}

Json::Value ParseStore(const std::string& text) {
  if (text.size() > kSizeLimit) {
    Refuse(fmt::format("it is larger than {} bytes", kSizeLimit));
  }
  // The parser takes a NUL for the end and line ends inside texts for parts of them.
  if (std::ranges::any_of(text, IsForbidden)) {
    Refuse("it holds a control character");
  }
  Json::CharReaderBuilder builder;
  Json::CharReaderBuilder::strictMode(&builder.settings_);
  builder["skipBom"] = false;
  builder["stackLimit"] = kDepthLimit;
  const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  Json::Value root;
  std::string errors;
  bool parsed = false;
  try {
    parsed = reader->parse(text.data(), text.data() + text.size(), &root, &errors);
  } catch (const Json::Exception& exception) {
    errors = exception.what();
  }
  if (!parsed) {
    std::ranges::replace(errors, '\n', ' ');
    Refuse(errors.substr(0, kErrorLimit));
  }
  if (!root.isObject()) {
    Refuse("it is not an object");
  }
  return root;
}

}  // namespace Detail

StoreContent ReadStore(const std::string& path) {
  StoreContent content;
  try {
    content.text = ReadText(path);
    content.root = std::make_shared<const Json::Value>(Detail::ParseStore(content.text));
  } catch (const std::runtime_error& exception) {
    content.error = path + ": " + exception.what();
  }
  return content;
}

const Json::Value& SectionOf(const Json::Value& root, const std::string& section) {
  static const Json::Value kEmpty(Json::objectValue);
  const Json::Value& found = root[section];
  return found.isObject() ? found : kEmpty;
}

std::string DescribeMismatch(const std::string& path, const std::string& section,
                             const std::string& key, const Json::Value& found,
                             const std::string& expected) {
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  std::string shown = Json::writeString(builder, found);
  if (shown.size() > kShownLimit) {
    shown.replace(kShownLimit, std::string::npos, "...");
  }
  return fmt::format("{}: section \"{}\"{}: found {}, expected {}; using the default", path,
                     section, key.empty() ? "" : ", key \"" + key + "\"", shown, expected);
}

}  // namespace KvConfig
