// Shows a page in the user's browser, outside the namespace that this process enters meanwhile.
#pragma once

#include <string>

#include "platform/os/descriptor.h"

class CPageOpener {
 public:
  // Made where the browser shall live, while this process has one thread.
  CPageOpener();
  CPageOpener(const CPageOpener&) = delete;
  CPageOpener& operator=(const CPageOpener&) = delete;

  // Once. Nothing happens where there is no display or no browser. Who was asked outlives this
  // object.
  void Open(const std::string& url);

 private:
  CDescriptor mPipe;
};
