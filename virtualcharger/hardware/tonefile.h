// The console's tone: a single file that takes the kernel's request for it, and remembers.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/worker/steadyclock.h"
#include "virtualcharger/hardware/faults.h"
#include "virtualcharger/hardware/filetree.h"
#include "virtualcharger/hardware/history.h"

// The place of its faults, which have no attribute: a request is a write.
inline constexpr auto kToneDevice = "tone";

inline constexpr double kToneClock = 1'193'180;  // Hz

struct STone {
  ISteadyClock::TimePoint time;
  unsigned divisor;       // of the tone clock; 0 is silence
  std::uint64_t end = 0;  // the mark behind it
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

  // The requests that took effect, in order: the newest 10 000, as CHistory tells them.
  using Mark = CHistory<STone>::Mark;
  Mark End() const;
  std::vector<STone> Since(Mark mark) const;
  std::optional<STone> Last() const;
  // How often a tone began behind silence.
  unsigned Beeps() const;

  // Called after each request. Set before the first one.
  void SetListener(std::function<void()> listener) { mListener = std::move(listener); }

 private:
  int Strike(CFaults::EMoment moment);

  const std::shared_ptr<CFaults> mFaults;
  const std::shared_ptr<ISteadyClock> mClock;
  std::function<void()> mListener = [] {};
  mutable std::mutex mMutex;
  // Guarded by mMutex.
  CHistory<STone> mTones{10'000};
  unsigned mBeeps = 0;
};
