#include "virtualcharger/hardware/tonefile.h"

#include <linux/kd.h>

#include <cerrno>
#include <utility>

CToneFile::CToneFile(std::shared_ptr<CFaults> faults, std::shared_ptr<ISteadyClock> clock)
    : mFaults(std::move(faults)), mClock(std::move(clock)) {}

std::optional<IFileTree::SNode> CToneFile::Look(const std::string& path) {
  if (!path.empty() || mFaults->IsVanished(kToneDevice)) return std::nullopt;
  return SNode{false, true};
}

std::vector<std::string> CToneFile::List(const std::string&) {
  return {};
}

int CToneFile::Probe(const std::string&, bool) {
  return Strike(CFaults::EMoment::Probe);
}

int CToneFile::Open(const std::string&, bool forWriting, std::uint64_t&) {
  return Strike(forWriting ? CFaults::EMoment::OpenForWriting : CFaults::EMoment::OpenForReading);
}

int CToneFile::Read(const std::string&, std::uint64_t, std::string&) {
  return EIO;
}

int CToneFile::Write(const std::string&, std::uint64_t, std::string_view, std::size_t&) {
  return EIO;
}

int CToneFile::Control(const std::string&, unsigned request, std::uintptr_t argument) {
  if (const int error = Strike(CFaults::EMoment::Write)) return error;
  if (request != KIOCSOUND) return ENOTTY;
  {
    const std::lock_guard lock(mMutex);
    const auto last = mTones.Last();
    const STone tone{mClock->Now(), static_cast<unsigned>(argument), mTones.End() + 1};
    if (tone.divisor != 0 && (!last || last->divisor == 0)) ++mBeeps;
    mTones.Add(tone);
  }
  mListener();
  return 0;
}

void CToneFile::Close() {
  mFaults->Close();
}

CToneFile::Mark CToneFile::End() const {
  const std::lock_guard lock(mMutex);
  return mTones.End();
}

std::vector<STone> CToneFile::Since(Mark mark) const {
  const std::lock_guard lock(mMutex);
  return mTones.Since(mark);
}

std::optional<STone> CToneFile::Last() const {
  const std::lock_guard lock(mMutex);
  return mTones.Last();
}

unsigned CToneFile::Beeps() const {
  const std::lock_guard lock(mMutex);
  return mBeeps;
}

int CToneFile::Strike(CFaults::EMoment moment) {
  // Bound over another file, the file is found without being looked for.
  if (mFaults->IsVanished(kToneDevice)) return ENOENT;
  const auto hit = mFaults->Strike(kToneDevice, "", moment);
  if (!hit) return 0;
  if (hit->fault.kind == EFault::Slow) mFaults->Delay(*hit);
  return hit->fault.error;
}
