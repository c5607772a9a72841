// The console's tone: a single file that takes the kernel's request for it, and remembers.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/worker/steadyclock.h"
#include "virtualcharger/hardware/faults.h"
#include "virtualcharger/hardware/filetree.h"

// The place of its faults, which have no attribute: a request is a write.
inline constexpr auto kToneDevice = "tone";

inline constexpr double kToneClock = 1'193'180;  // Hz

struct STone {
  ISteadyClock::TimePoint time;
  unsigned divisor;  // of the tone clock; 0 is silence
};

// Threads: may be called from any.
class CToneFile : public IFileTree {
 public:
  CToneFile(std::shared_ptr<CFaults> faults, std::shared_ptr<ISteadyClock> clock);

  std::optional<SNode> Look(const std::string& path) override;
  std::vector<std::string> List(const std::string& path) override;
  int Probe(const std::string& path, bool forWriting) override;
  int Open(const std::string& path, bool forWriting, std::uint64_t& handle) override;
  int Read(const std::string& path, std::uint64_t handle, std::string& text) override;
  int Write(const std::string& path, std::uint64_t handle, std::string_view text,
            std::size_t& accepted) override;
  int Control(const std::string& path, unsigned request, std::uintptr_t argument) override;
  void Close() override;

  // Every request that took effect, in order, without the first ones.
  std::vector<STone> Tones(std::size_t without = 0) const;

  // Called after each request. Set before the first one.
  void SetListener(std::function<void()> listener) { mListener = std::move(listener); }

 private:
  int Strike(CFaults::EMoment moment);

  const std::shared_ptr<CFaults> mFaults;
  const std::shared_ptr<ISteadyClock> mClock;
  std::function<void()> mListener = [] {};
  mutable std::mutex mMutex;
  std::vector<STone> mTones;  // guarded by mMutex
};
