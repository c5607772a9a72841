#include "virtualcharger/hardware/devicetree.h"

#include <algorithm>
#include <cerrno>
#include <set>
#include <utility>

namespace {

// The kernel hands a driver one page of a write, the writer comes back with the rest.
constexpr std::size_t kPage = 4096;

}  // namespace

CDeviceTree::CDeviceTree(Devices devices, std::shared_ptr<CFaults> faults,
                         std::shared_ptr<CWriteHistory> history)
    : mDevices(std::move(devices)), mFaults(std::move(faults)), mHistory(std::move(history)) {}

std::optional<IFileTree::SNode> CDeviceTree::Look(const std::string& path) {
  if (path.empty() || !List(path).empty()) return SNode{true, false};
  const auto attribute = Attribute(PlaceOf(path));
  return attribute ? std::optional(SNode{false, attribute->writable}) : std::nullopt;
}

std::vector<std::string> CDeviceTree::List(const std::string& path) {
  const auto folder = path.empty() ? path : path + '/';
  std::set<std::string> names;
  for (const auto& [name, device] : mDevices) {
    if (!name.starts_with(folder) || mFaults->IsVanished(name)) continue;
    const auto rest = name.substr(folder.size());
    names.insert(rest.substr(0, rest.find('/')));
  }
  if (const auto* device = Device(path); device != nullptr) {
    for (const auto& attribute : device->Attributes()) names.emplace(attribute.name);
  }
  return {names.begin(), names.end()};
}

int CDeviceTree::Probe(const std::string& path, bool forWriting) {
  const auto place = PlaceOf(path);
  const auto attribute = Attribute(place);
  if (!attribute) return Look(path) ? 0 : ENOENT;
  if (forWriting && !attribute->writable) return EACCES;
  const auto hit = mFaults->Strike(place.device, place.attribute, CFaults::EMoment::Probe);
  return hit ? hit->fault.error : 0;
}

int CDeviceTree::Open(const std::string& path, bool forWriting, std::uint64_t& handle) {
  const auto place = PlaceOf(path);
  if (!forWriting) return CheckOpening(place, CFaults::EMoment::OpenForReading, handle);
  const int error = CheckOpening(place, CFaults::EMoment::OpenForWriting, handle);
  if (error != 0) mHistory->Add({{}, place.device, place.attribute, "", error, 0});
  return error;
}

int CDeviceTree::CheckOpening(const SPlace& place, CFaults::EMoment moment, std::uint64_t& handle) {
  const auto attribute = Attribute(place);
  if (!attribute) return ENOENT;
  if (moment == CFaults::EMoment::OpenForWriting && !attribute->writable) return EACCES;
  handle = attribute->generation;
  const auto hit = mFaults->Strike(place.device, place.attribute, moment);
  return hit ? hit->fault.error : 0;
}

int CDeviceTree::Read(const std::string& path, std::uint64_t handle, std::string& text) {
  const auto place = PlaceOf(path);
  if (IsStale(place, handle)) return ENODEV;
  std::string value;
  if (const int error = mDevices.at(place.device)->Read(place.attribute, value)) return error;
  // Only now: a fault also strikes a reading that was under way when it came.
  bool frozen = false;
  if (const auto hit = mFaults->Strike(place.device, place.attribute, CFaults::EMoment::Read)) {
    if (hit->fault.kind == EFault::Error) return hit->fault.error;
    if (hit->fault.kind == EFault::Garbage) value = hit->fault.text;
    if (hit->fault.kind == EFault::Slow) mFaults->Delay(*hit);
    frozen = hit->fault.kind == EFault::Frozen;
  }
  if (IsStale(place, handle)) return ENODEV;
  const std::lock_guard lock(mMutex);
  const auto last = mLastTexts.try_emplace(path, value).first;
  if (!frozen) last->second = value;
  text = last->second;
  return 0;
}

int CDeviceTree::Write(const std::string& path, std::uint64_t handle, std::string_view text,
                       std::size_t& accepted) {
  const auto place = PlaceOf(path);
  accepted = 0;
  text = text.substr(0, kPage);
  const int error = Apply(place, handle, text, accepted);
  mHistory->Add({{}, place.device, place.attribute, std::string(text), error, accepted});
  return error;
}

int CDeviceTree::Apply(const SPlace& place, std::uint64_t handle, std::string_view text,
                       std::size_t& accepted) {
  if (IsStale(place, handle)) return ENODEV;
  if (const auto hit = mFaults->Strike(place.device, place.attribute, CFaults::EMoment::Write)) {
    if (hit->fault.kind == EFault::Error) return hit->fault.error;
    if (hit->fault.kind == EFault::Short) {
      accepted = text.size() / 2;
      return 0;
    }
    mFaults->Delay(*hit);
    if (IsStale(place, handle)) return ENODEV;
  }
  const int error = mDevices.at(place.device)->Write(place.attribute, text);
  if (error == 0) accepted = text.size();
  return error;
}

int CDeviceTree::Control(const std::string&, unsigned, std::uintptr_t) {
  return ENOTTY;
}

void CDeviceTree::Close() {
  mFaults->Close();
  for (const auto& [name, device] : mDevices) device->Close();
}

CDeviceTree::SPlace CDeviceTree::PlaceOf(const std::string& path) {
  const auto slash = path.rfind('/');
  if (slash == std::string::npos) return {path, ""};
  return {path.substr(0, slash), path.substr(slash + 1)};
}

IDevice* CDeviceTree::Device(const std::string& name) const {
  const auto found = mDevices.find(name);
  return found == mDevices.end() || mFaults->IsVanished(name) ? nullptr : found->second.get();
}

std::optional<SAttribute> CDeviceTree::Attribute(const SPlace& place) const {
  const auto* device = Device(place.device);
  if (device == nullptr) return std::nullopt;
  const auto attributes = device->Attributes();
  const auto found =
      std::find_if(attributes.begin(), attributes.end(),
                   [&](const SAttribute& attribute) { return attribute.name == place.attribute; });
  return found == attributes.end() ? std::nullopt : std::optional(*found);
}

bool CDeviceTree::IsStale(const SPlace& place, std::uint64_t handle) const {
  const auto attribute = Attribute(place);
  return !attribute || attribute->generation != handle;
}
