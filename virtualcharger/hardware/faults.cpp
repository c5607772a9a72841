#include "virtualcharger/hardware/faults.h"

#include <algorithm>
#include <cerrno>

namespace {

using EMoment = CFaults::EMoment;

struct SNamedFault {
  std::string_view name;
  EFault kind;
  int error;
};

// clang-format off
constexpr SNamedFault kNamedFaults[]{
    {"EIO",       EFault::Error,    EIO},
    {"EACCES",    EFault::Error,    EACCES},
    {"ENOENT",    EFault::Error,    ENOENT},
    {"ENODEV",    EFault::Error,    ENODEV},
    {"EAGAIN",    EFault::Error,    EAGAIN},
    {"EBUSY",     EFault::Error,    EBUSY},
    {"EINVAL",    EFault::Error,    EINVAL},
    {"ETIMEDOUT", EFault::Error,    ETIMEDOUT},
    {"slow",      EFault::Slow,     0},
    {"short",     EFault::Short,    0},
    {"garbage",   EFault::Garbage,  0},
    {"frozen",    EFault::Frozen,   0},
    {"vanished",  EFault::Vanished, 0},
};
// clang-format on

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
    case EFault::Frozen:
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

const std::vector<std::string>& FaultNames() {
  static const std::vector<std::string> names = [] {
    std::vector<std::string> all;
    for (const auto& row : kNamedFaults) all.emplace_back(row.name);
    return all;
  }();
  return names;
}

std::optional<SFault> FaultNamed(std::string_view name) {
  const auto* const found = std::ranges::find(kNamedFaults, name, &SNamedFault::name);
  if (found == std::end(kNamedFaults)) return std::nullopt;
  SFault fault;
  fault.kind = found->kind;
  fault.error = found->error;
  return fault;
}

std::string_view FaultName(const SFault& fault) {
  const auto* const found = std::ranges::find_if(kNamedFaults, [&](const SNamedFault& row) {
    return row.kind == fault.kind && row.error == fault.error;
  });
  return found == std::end(kNamedFaults) ? std::string_view("unknown") : found->name;
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

bool CFaults::Clear(const std::string& device, const std::string& attribute) {
  bool cleared = false;
  {
    const std::lock_guard lock(mMutex);
    cleared = mEntries.erase({device, attribute}) > 0;
  }
  mChanged.notify_all();
  return cleared;
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

std::vector<CFaults::SSet> CFaults::All() const {
  const std::lock_guard lock(mMutex);
  std::vector<SSet> all;
  for (const auto& [place, entry] : mEntries) {
    if (entry.fault.writes > 0 && entry.writesLeft == 0) continue;
    all.push_back({place.first, place.second, entry.fault, entry.writesLeft});
  }
  return all;
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
