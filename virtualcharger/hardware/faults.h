// Faults of the virtual hardware: what goes wrong where, until it is cleared or used up.
//
// A place is a device and an attribute, each empty for all. The most exact place wins; a place has
// one fault, the one set last.
//
// Threads: may be called from any.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/worker/steadyclock.h"

enum class EFault {
  Error,     // reads and writes fail; with EACCES or ENOENT already the opening does
  Slow,      // reads and writes take effect after the delay
  Short,     // half of the bytes written are accepted, and nothing takes effect
  Garbage,   // reads give the text
  Frozen,    // reads give what was read last before; then what the first one gives
  Vanished,  // the device's directory is gone; the place's attribute is not looked at
};

struct SFault {
  EFault kind = EFault::Error;
  int error = 0;
  std::chrono::milliseconds delay{};
  std::string text{};
  unsigned writes = 0;  // above 0: concerns only so many next writes, and no reads
};

// The names of all faults: some of the kernel's error names, "slow", "short", "garbage", "frozen",
// "vanished".
const std::vector<std::string>& FaultNames();

// As in the list of names.
std::string_view FaultName(const SFault& fault);

// Nothing for another name. Delay, text and number of writes are the caller's to fill in.
std::optional<SFault> FaultNamed(std::string_view name);

class CFaults {
 public:
  enum class EMoment { Probe, OpenForReading, OpenForWriting, Read, Write };
  struct SHit {
    SFault fault;
    std::uint64_t id;
  };

  explicit CFaults(std::shared_ptr<ISteadyClock> clock);

  void Set(const std::string& device, const std::string& attribute, SFault fault);
  // The same place as it was set at. False where there was none.
  bool Clear(const std::string& device, const std::string& attribute);
  void ClearAll();

  bool IsVanished(const std::string& device) const;

  struct SSet {
    std::string device;
    std::string attribute;
    SFault fault;
    unsigned writesLeft;  // of a counted number of writes
  };
  // All that are set; one that is used up is not.
  std::vector<SSet> All() const;

  // The fault that strikes at this moment; one of a counted number of writes is used up by it.
  std::optional<SHit> Strike(const std::string& device, const std::string& attribute,
                             EMoment moment);

  // Blocks for a slow fault's delay, or until it is cleared or replaced or the hardware closes.
  void Delay(const SHit& hit);

  // Ends all delays, for good.
  void Close();

 private:
  struct SEntry {
    SFault fault;
    std::uint64_t id;
    unsigned writesLeft;
  };

  bool IsSet(std::uint64_t id) const;

  const std::shared_ptr<ISteadyClock> mClock;
  mutable std::mutex mMutex;
  std::condition_variable mChanged;
  // Guarded by mMutex.
  std::map<std::pair<std::string, std::string>, SEntry> mEntries;
  std::uint64_t mLastId = 0;
  bool mClosed = false;
};
