// Cuts what comes out of a descriptor into lines.
#pragma once

#include <optional>
#include <string>

class CLineBuffer {
 public:
  // Reads once what there is. False at the end of the input or on an error; true where there is
  // nothing yet on a descriptor that does not block.
  bool ReadFrom(int descriptor);

  // The next whole line without its end; nothing if there is none.
  std::optional<std::string> Next();

 private:
  std::string mText;
};
