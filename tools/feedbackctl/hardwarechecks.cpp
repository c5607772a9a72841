#include <fcntl.h>
#include <fmt/format.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <optional>
#include <utility>

#include "platform/os/descriptor.h"
#include "platform/rpc/peercheck.h"
#include "tools/feedbackctl/doctorchecks.h"
#include "tools/feedbackctl/socketprobe.h"
#include "tools/feedbackctl/storecheck.h"
#include "utils/settingscatalogue.h"

namespace {

constexpr auto kChannels = std::to_array<const char*>({"red", "green", "blue"});
constexpr auto kTrigger = "trigger";
// These come with the trigger.
constexpr auto kTriggersOwn =
    std::to_array<const char*>({"pattern", "max_pattern_brightness", "min_pattern_brightness"});
constexpr int kSensors = 10;

// The files as the daemon sees them, which may be in a mount namespace of its own, and for its
// user.
class CView {
 public:
  explicit CView(std::optional<Rpc::Peer> daemon)
      : mDaemon(std::move(daemon)),
        mRoot(open(mDaemon ? fmt::format("/proc/{}/root", mDaemon->pid).c_str() : "/", kFolder)) {
    // Another user's namespace is closed to this one.
    if (!mRoot) {
      mRoot = CDescriptor(open("/", kFolder));
    }
  }

  bool HasDaemon() const { return mDaemon.has_value(); }

  bool Exists(const std::string& path) const { return Open(path).Get() >= 0; }

  // Empty when the access (R_OK, W_OK) is granted, else what is in its way.
  std::string Refusal(const std::string& path, int wanted) const {
    const CDescriptor file = Open(path);
    if (file.Get() < 0) {
      return "is missing";
    }
    return MayAccess(file.Get(), wanted)
               ? ""
               : fmt::format("is not {} for user {}", wanted == W_OK ? "writable" : "readable",
                             mDaemon ? mDaemon->user : geteuid());
  }

 private:
  // Links are followed as the daemon follows them.
  CDescriptor Open(const std::string& path) const {
    open_how how{};
    how.flags = O_PATH | O_CLOEXEC;
    how.resolve = RESOLVE_IN_ROOT;
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-vararg): the C library has no function for it
    const long file = syscall(SYS_openat2, mRoot.Get(), path.c_str(), &how, sizeof how);
    const bool isOldKernel = file < 0 && errno == ENOSYS;
    return CDescriptor(isOldKernel ? open(path.c_str(), O_PATH | O_CLOEXEC)
                                   : static_cast<int>(file));
  }

  bool MayAccess(int file, int wanted) const {
    if (!mDaemon || mDaemon->user == geteuid()) {
      return access(fmt::format("/proc/self/fd/{}", file).c_str(), wanted) == 0;
    }
    struct stat status {};
    if (fstat(file, &status) != 0) {
      return false;
    }
    const auto& groups = mDaemon->groups;
    const bool isInGroup = std::ranges::find(groups, status.st_gid) != groups.end();
    const unsigned shift = mDaemon->user == status.st_uid ? 6 : isInGroup ? 3 : 0;
    return mDaemon->user == 0 || ((status.st_mode >> shift) & static_cast<unsigned>(wanted)) != 0;
  }

  static constexpr int kFolder = O_PATH | O_CLOEXEC | O_DIRECTORY;

  const std::optional<Rpc::Peer> mDaemon;
  CDescriptor mRoot;
};

SCheck CheckChannel(const CView& view, const std::string& channel, bool isFitted) {
  const auto folder = fmt::format("/sys/class/leds/kelo:{}:top/", channel);
  SCheck check{EVerdict::EOk, channel + " channel", folder, ""};
  const auto refuse = [&](const std::string& attribute, const std::string& refusal) {
    check.verdict = isFitted ? EVerdict::EFailed : EVerdict::EWarning;
    check.found = fmt::format("{}{} {}", folder, attribute, refusal);
    check.remedy = isFitted ? "look at the device tree and the udev rules of the lamp"
                            : "no lamp is fitted: HwHasLed is false";
  };
  if (const auto refusal = view.Refusal(folder + kTrigger, W_OK); !refusal.empty()) {
    refuse(kTrigger, refusal);
    return check;
  }
  for (const std::string attribute : kTriggersOwn) {
    if (!view.HasDaemon() && !view.Exists(folder + attribute)) {
      continue;  // nobody has set the trigger yet
    }
    if (const auto refusal = view.Refusal(folder + attribute, W_OK); !refusal.empty()) {
      refuse(attribute, refusal);
      break;
    }
  }
  return check;
}

SCheck CheckSensor(const CView& view, bool isUsed) {
  const std::string folder = "/var/sysfs-links/light";
  const auto verdict = isUsed ? EVerdict::EFailed : EVerdict::EWarning;
  const auto remedy = isUsed ? "look at the sensor's driver and the link, or set "
                               "HmiLedIntensityMode to Fixed"
                             : "not needed while HmiLedIntensityMode is Fixed";
  for (int number = 0; number < kSensors; ++number) {
    const auto device = fmt::format("{}/iio:device{}", folder, number);
    if (!view.Exists(device)) {
      continue;
    }
    const auto input = device + "/in_illuminance_input";
    const auto refusal = view.Refusal(input, R_OK);
    return refusal.empty() ? SCheck{EVerdict::EOk, "light sensor", device, ""}
                           : SCheck{verdict, "light sensor", input + " " + refusal, remedy};
  }
  return {verdict, "light sensor", folder + " has no iio:device0 to 9", remedy};
}

SCheck CheckWritable(const CView& view, const char* name, const std::string& path) {
  const auto refusal = view.Refusal(path, W_OK);
  return refusal.empty() ? SCheck{EVerdict::EOk, name, path, ""}
                         : SCheck{EVerdict::EFailed, name, path + " " + refusal,
                                  "look at the buzzer's driver and the rights, or set HwHasBuzzer "
                                  "to false"};
}

}  // namespace

Checks CheckHardware(const CInvocation& invocation, const CServices& services) {
  const CView view(ServedBy(services.Directory() + "/" + kControlService));
  const bool hasLed =
      EffectiveSetting(invocation.Store(), Settings::kHardwareSection, Settings::kHasLed).asBool();
  Checks checks;
  for (const auto* channel : kChannels) {
    checks.push_back(CheckChannel(view, channel, hasLed));
  }
  const auto mode =
      EffectiveSetting(invocation.Store(), Settings::kSection, Settings::kLedIntensityMode)
          .asString();
  checks.push_back(CheckSensor(view, mode == "Auto" || mode == "auto"));
  if (EffectiveSetting(invocation.Store(), Settings::kHardwareSection, Settings::kHasBuzzer)
          .asBool()) {
    checks.push_back(CheckWritable(view, "buzzer volume", "/var/sysfs-links/beeper/volume"));
    checks.push_back(CheckWritable(view, "buzzer tone", "/dev/tty0"));
  } else {
    checks.push_back({EVerdict::EOk, "buzzer", "not fitted: HwHasBuzzer is false", ""});
  }
  return checks;
}
