#include "platform/sysfs/pathsysfsaccess.h"

#include <utility>

namespace {

std::string WithClosingSlash(std::string directory) {
  if (!directory.ends_with('/')) {
    directory += '/';
  }
  return directory;
}

}  // namespace

CPathSysfsAccess::CPathSysfsAccess(std::string directory)
    : mDirectory(WithClosingSlash(std::move(directory))) {}

bool CPathSysfsAccess::Write(const std::string& attribute, std::string_view text) {
  return CSysfsAccess::Write(mDirectory + attribute, text);
}

bool CPathSysfsAccess::Read(const std::string& attribute, std::string& text) {
  return CSysfsAccess::Read(mDirectory + attribute, text);
}

bool CPathSysfsAccess::WaitForAccess(const std::string& attribute,
                                     std::chrono::milliseconds limit) {
  return CSysfsAccess::WaitForAccess(mDirectory + attribute, limit);
}
