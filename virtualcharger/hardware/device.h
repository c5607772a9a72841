// One directory of attributes, as a driver offers it in the kernel's device file system.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

struct SAttribute {
  std::string_view name;  // lives as long as the device
  bool writable;
  std::uint64_t generation;  // another one each time that the attribute has been re-created
};

// Threads: called from several at once.
class IDevice {
 public:
  virtual ~IDevice() = default;

  // What exists now.
  virtual std::vector<SAttribute> Attributes() const = 0;

  // Both return 0 or an errno value; ENOENT for what does not exist. Read leaves the text alone on
  // failure. May block as the real driver does.
  virtual int Read(std::string_view attribute, std::string& text) = 0;
  virtual int Write(std::string_view attribute, std::string_view text) = 0;

  // Lets calls that block return, for good.
  virtual void Close() {}
};
