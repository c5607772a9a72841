// A tree of folders with devices at its ends, each a folder of attributes, with the faults that
// were set and a record of every write.
#pragma once

#include <map>
#include <memory>
#include <mutex>

#include "virtualcharger/hardware/device.h"
#include "virtualcharger/hardware/faults.h"
#include "virtualcharger/hardware/filetree.h"
#include "virtualcharger/hardware/writehistory.h"

class CDeviceTree : public IFileTree {
 public:
  // By their folders' paths; faults and the record name them the same way.
  using Devices = std::map<std::string, std::shared_ptr<IDevice>>;

  CDeviceTree(Devices devices, std::shared_ptr<CFaults> faults,
              std::shared_ptr<CWriteHistory> history);

  std::optional<SNode> Look(const std::string& path) override;
  std::vector<std::string> List(const std::string& path) override;
  int Probe(const std::string& path, bool forWriting) override;
  int Open(const std::string& path, bool forWriting, std::uint64_t& handle) override;
  int Read(const std::string& path, std::uint64_t handle, std::string& text) override;
  int Write(const std::string& path, std::uint64_t handle, std::string_view text,
            std::size_t& accepted) override;
  int Control(const std::string& path, unsigned request, std::uintptr_t argument) override;
  void Close() override;

 private:
  struct SPlace {
    std::string device;
    std::string attribute;
  };

  static SPlace PlaceOf(const std::string& path);
  // Null if there is none, or none any more.
  IDevice* Device(const std::string& name) const;
  std::optional<SAttribute> Attribute(const SPlace& place) const;
  bool IsStale(const SPlace& place, std::uint64_t handle) const;
  int CheckOpening(const SPlace& place, CFaults::EMoment moment, std::uint64_t& handle);
  int Apply(const SPlace& place, std::uint64_t handle, std::string_view text,
            std::size_t& accepted);

  const Devices mDevices;
  const std::shared_ptr<CFaults> mFaults;
  const std::shared_ptr<CWriteHistory> mHistory;

  std::mutex mMutex;
  std::map<std::string, std::string> mLastTexts;  // by path, as read last; guarded by mMutex
};
