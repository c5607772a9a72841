#include "virtualcharger/hardware/faults.h"

#include <algorithm>
#include <cerrno>

namespace {

using EMoment = CFaults::EMoment;

bool Strikes(const SFault& fault, EMoment moment) {
  const bool accessed = moment == EMoment::Read || moment == EMoment::Write;
  switch (fault.kind) {
    case EFault::Error:
      return accessed != (fault.error == EACCES || fault.error == ENOENT);
    case EFault::Slow:
      return accessed;
    case EFault::Short:
      return moment == EMoment::Write;
    case EFault::Garbage:
      return moment == EMoment::Read;
    case EFault::Vanished:
      return false;
  }
  return false;
}

bool IsWriting(EMoment moment) {
  return moment == EMoment::OpenForWriting || moment == EMoment::Write;
}

}  // namespace

std::optional<SFault> FaultNamed(std::string_view name) {
  static const std::map<std::string_view, SFault> faults{
      {"EIO", {EFault::Error, EIO}},       {"EACCES", {EFault::Error, EACCES}},
      {"ENOENT", {EFault::Error, ENOENT}}, {"EBUSY", {EFault::Error, EBUSY}},
      {"EINVAL", {EFault::Error, EINVAL}}, {"slow", {EFault::Slow}},
      {"short", {EFault::Short}},          {"garbage", {EFault::Garbage}},
      {"vanished", {EFault::Vanished}}};
  const auto found = faults.find(name);
  return found == faults.end() ? std::nullopt : std::optional(found->second);
}

CFaults::CFaults(std::shared_ptr<ISteadyClock> clock) : mClock(std::move(clock)) {}

void CFaults::Set(const std::string& device, const std::string& attribute, SFault fault) {
  {
    const std::lock_guard lock(mMutex);
    const auto writes = fault.writes;
    mEntries.insert_or_assign({device, attribute}, SEntry{std::move(fault), ++mLastId, writes});
  }
  mChanged.notify_all();
}

void CFaults::Clear(const std::string& device, const std::string& attribute) {
  {
    const std::lock_guard lock(mMutex);
    mEntries.erase({device, attribute});
  }
  mChanged.notify_all();
}

void CFaults::ClearAll() {
  {
    const std::lock_guard lock(mMutex);
    mEntries.clear();
  }
  mChanged.notify_all();
}

bool CFaults::IsVanished(const std::string& device) const {
  const std::lock_guard lock(mMutex);
  return std::any_of(mEntries.begin(), mEntries.end(), [&](const auto& entry) {
    const auto& name = entry.first.first;
    return entry.second.fault.kind == EFault::Vanished && (name.empty() || name == device);
  });
}

std::optional<CFaults::SHit> CFaults::Strike(const std::string& device,
                                             const std::string& attribute, EMoment moment) {
  const std::lock_guard lock(mMutex);
  const std::pair<std::string, std::string> places[] = {
      {device, attribute}, {device, ""}, {"", attribute}, {"", ""}};
  for (const auto& place : places) {
    const auto found = mEntries.find(place);
    if (found == mEntries.end()) continue;
    auto& [fault, id, writesLeft] = found->second;
    if (!Strikes(fault, moment)) continue;
    if (fault.writes > 0) {
      if (!IsWriting(moment) || writesLeft == 0) continue;
      --writesLeft;
    }
    return SHit{fault, id};
  }
  return std::nullopt;
}

void CFaults::Delay(const SHit& hit) {
  std::unique_lock lock(mMutex);
  const auto end = mClock->Now() + hit.fault.delay;
  while (!mClosed && IsSet(hit.id) && mClock->Now() < end) mClock->WaitUntil(mChanged, lock, end);
}

void CFaults::Close() {
  {
    const std::lock_guard lock(mMutex);
    mClosed = true;
  }
  mChanged.notify_all();
}

bool CFaults::IsSet(std::uint64_t id) const {
  return std::any_of(mEntries.begin(), mEntries.end(),
                     [id](const auto& entry) { return entry.second.id == id; });
}
