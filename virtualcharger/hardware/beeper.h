// The beeper's driver: it only keeps the volume.
#pragma once

#include <mutex>
#include <string>

#include "virtualcharger/hardware/device.h"

// Threads: may be called from any.
class CBeeper : public IDevice {
 public:
  std::vector<SAttribute> Attributes() const override;
  int Read(std::string_view attribute, std::string& text) override;
  int Write(std::string_view attribute, std::string_view text) override;

 private:
  std::mutex mMutex;
  std::string mVolume = "0\n";  // guarded by mMutex
};
