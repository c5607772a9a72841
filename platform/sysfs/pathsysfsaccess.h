// Attributes by name in one directory.
#pragma once

#include <string>

#include "platform/sysfs/sysfsaccess.h"

class CPathSysfsAccess : public CSysfsAccess {
 public:
  // The directory's path, with or without the closing slash.
  explicit CPathSysfsAccess(std::string directory);

  bool Write(const std::string& attribute, std::string_view text) override;
  bool Read(const std::string& attribute, std::string& text) override;
  bool WaitForAccess(const std::string& attribute, std::chrono::milliseconds limit) override;

 private:
  const std::string mDirectory;
};
