// Attributes of the kernel's device file systems as text: open, read or write, close, with every
// result looked at. A failure is logged at debug level with the path and the errno text, and is
// returned as false; nothing is retried and nothing throws.
//
// Threads: no state; may be shared and called from any thread. A slow attribute blocks its caller.
#pragma once

#include <chrono>
#include <string>
#include <string_view>

// By path.
class CSysfsAccess {
 public:
  virtual ~CSysfsAccess() = default;

  // Writes the text as one write, which is what an attribute takes as one value.
  virtual bool Write(const std::string& attribute, std::string_view text);

  // Reads the whole value, at most one page (4096 bytes). The one line end that the kernel adds is
  // stripped. The text is left alone on failure.
  virtual bool Read(const std::string& attribute, std::string& text);

  // Waits until this process may read and write the attribute, false when the limit has passed
  // first. For attributes that appear with a driver and get their permissions from udev later.
  virtual bool WaitForAccess(const std::string& attribute, std::chrono::milliseconds limit);
};
