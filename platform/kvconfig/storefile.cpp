#include "platform/kvconfig/storefile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <exception>
#include <stdexcept>
#include <system_error>

#include "platform/os/descriptor.h"

namespace KvConfig {
namespace {

constexpr size_t kSizeLimit = 1024 * 1024;
constexpr int kDepthLimit = 32;
constexpr size_t kShownLimit = 80;   // of a value, in a message
constexpr size_t kErrorLimit = 200;  // of the parser's words, which quote the text

bool IsForbidden(char character) {
  const auto code = static_cast<unsigned char>(character);
  return code < ' ' && character != '\n' && character != '\r' && character != '\t';
}

std::string ReadText(const std::string& path) {
  // Neither a pipe nor a terminal in the store's place may hold the process up.
  const CDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (!file) {
    throw std::runtime_error(Detail::SystemError("cannot open the store", path));
  }
  struct stat status {};
  if (fstat(file.Get(), &status) != 0 || !S_ISREG(status.st_mode)) {
    throw std::runtime_error(path + ": not a valid store: not a regular file");
  }
  std::string text;
  std::array<char, 16 * 1024> buffer;
  for (;;) {
    const ssize_t size = read(file.Get(), buffer.data(), buffer.size());
    if (size == 0) {
      return text;
    }
    if (size > 0) {
      text.append(buffer.data(), static_cast<size_t>(size));
    } else if (errno != EINTR) {
      throw std::runtime_error(Detail::SystemError("cannot read the store", path));
    }
    if (text.size() > kSizeLimit) {
      throw std::runtime_error(
          fmt::format("{}: not a valid store: larger than {} bytes", path, kSizeLimit));
    }
  }
}

}  // namespace

namespace Detail {

std::string SystemError(const std::string& text, const std::string& path) {
  return fmt::format("{}: {}: {}", path, text, std::generic_category().message(errno));
}

Json::Value ParseStore(const std::string& text) {
  // The parser takes a NUL for the end and line ends inside texts for parts of them.
  if (std::ranges::any_of(text, IsForbidden)) {
    throw std::runtime_error("it holds a control character");
  }
  Json::CharReaderBuilder builder;
  Json::CharReaderBuilder::strictMode(&builder.settings_);
  builder["skipBom"] = false;
  builder["stackLimit"] = kDepthLimit;
  const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  Json::Value root;
  std::string errors;
  if (!reader->parse(text.data(), text.data() + text.size(), &root, &errors)) {
    std::ranges::replace(errors, '\n', ' ');
    throw std::runtime_error(errors.substr(0, kErrorLimit));
  }
  if (!root.isObject()) {
    throw std::runtime_error("it is not an object");
  }
  return root;
}

}  // namespace Detail

StoreContent ReadStore(const std::string& path) {
  StoreContent content;
  try {
    content.text = ReadText(path);
  } catch (const std::runtime_error& exception) {
    content.error = exception.what();
    return content;
  }
  try {
    content.root = std::make_shared<const Json::Value>(Detail::ParseStore(content.text));
  } catch (const std::exception& exception) {
    content.error = fmt::format("{}: not a valid store: {}", path, exception.what());
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
