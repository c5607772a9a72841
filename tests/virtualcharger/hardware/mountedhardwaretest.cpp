#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/kd.h>
#include <sys/ioctl.h>

#include <cerrno>
#include <filesystem>
#include <set>
#include <thread>

#include "tests/support/manualclock.h"
#include "tests/support/temporarydirectory.h"
#include "tests/virtualcharger/hardware/insidenamespace.h"
#include "virtualcharger/hardware/chargerhardware.h"

namespace {

namespace fs = std::filesystem;

const std::string kClasses = "/sys/class/";
const std::string kRed = kClasses + "leds/kelo:red:top/";
const std::string kGreen = kClasses + "leds/kelo:green:top/";

// All by plain system calls: 0 or an errno value.
int WriteFile(const std::string& path, const std::string& text) {
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
  if (file < 0) return errno;
  const auto written = write(file, text.data(), text.size());
  const int error = written < 0 ? errno : 0;
  close(file);
  return error == 0 && written != static_cast<ssize_t>(text.size()) ? EOVERFLOW : error;
}

// In pieces of seven bytes, so that a value takes several reads.
std::string ReadFile(const std::string& path) {
  const int file = open(path.c_str(), O_RDONLY);
  if (file < 0) return "error " + std::to_string(errno);
  std::string text;
  char piece[7];
  ssize_t size = 0;
  while ((size = read(file, piece, sizeof(piece))) > 0) {
    text.append(piece, static_cast<std::size_t>(size));
  }
  if (size < 0) text = "error " + std::to_string(errno);
  close(file);
  return text;
}

std::set<std::string> Names(const std::string& folder) {
  std::set<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder)) names.insert(entry.path().filename());
  return names;
}

// The hardware in its place, on a clock that stands still.
struct SWorld {
  std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
  std::shared_ptr<CFaults> faults = std::make_shared<CFaults>(clock);
  std::shared_ptr<CWriteHistory> history = std::make_shared<CWriteHistory>(clock);
  CStatusLight light{clock};
  std::optional<CMountedHardware> hardware{
      std::in_place, CFuseServer::Trees{{"leds", std::make_shared<CDeviceTree>(light.Devices(),
                                                                               faults, history)}}};

  SWorld() {
    const auto failure = hardware->Start({kLedsBinding});
    EXPECT_FALSE(failure) << *failure;
  }

  // A write that is under way and blocked when this returns.
  std::thread BlockedWrite(const std::string& path, const std::string& text, int& error) {
    auto slow = *FaultNamed("slow");
    slow.delay = std::chrono::hours(1);
    faults->Set("kelo:red:top", "pattern", slow);
    std::thread writer([&error, path, text] { error = WriteFile(path, text); });
    EXPECT_TRUE(clock->WaitForWaiter(clock->Now() + slow.delay));
    return writer;
  }
};

TEST(TheMountedHardware, BehavesAsTheKernelsAttributesDo) {
  RunInsideNamespace([] {
    const SWorld world;
    EXPECT_EQ(WriteFile(kRed + "pattern", "1 2 3 4"), EACCES) << "cannot be created";
    EXPECT_EQ(access((kRed + "max_pattern_brightness").c_str(), R_OK | W_OK), -1);
    EXPECT_EQ(WriteFile(kRed + "trigger", "pattern"), 0);
    EXPECT_EQ(access((kRed + "max_pattern_brightness").c_str(), R_OK | W_OK), 0);
    EXPECT_EQ(Names(kRed),
              (std::set<std::string>{"brightness", "max_brightness", "trigger", "pattern",
                                     "max_pattern_brightness", "min_pattern_brightness"}));
    EXPECT_EQ(WriteFile(kRed + "pattern", "1000 2500 0 2500 "), 0);
    EXPECT_EQ(ReadFile(kRed + "pattern"), "1000 2500 0 2500\n");
    EXPECT_EQ(WriteFile(kRed + "pattern", "-1 0 -1 0"), EINVAL);
    EXPECT_EQ(ReadFile(kRed + "pattern"), "");
    EXPECT_EQ(WriteFile(kRed + "max_brightness", "5"), EACCES);

    const int held = open((kRed + "pattern").c_str(), O_RDWR);
    EXPECT_EQ(write(held, "1 22 333 4444", 13), 13);
    char start[3];
    EXPECT_EQ(pread(held, start, 3, 0), 3);
    EXPECT_EQ(WriteFile(kRed + "pattern", "5 6 7 8"), 0);
    char rest[16];
    EXPECT_EQ(pread(held, rest, sizeof(rest), 3), 11) << "goes on with the text it began";
    EXPECT_EQ(WriteFile(kRed + "trigger", "pattern"), 0);
    EXPECT_EQ(write(held, "1 2 3 4", 7), -1) << "belongs to the attribute that was";
    EXPECT_EQ(errno, ENODEV);
    close(held);
    EXPECT_EQ(world.history->End(), 8U) << "with the refused ones, without the first";
  });
}

TEST(TheMountedHardware, ShowsInjectedFaultsToSystemCalls) {
  RunInsideNamespace([] {
    SWorld world;
    ASSERT_EQ(WriteFile(kRed + "trigger", "pattern"), 0);
    const std::pair<const char*, int> cases[] = {
        {"EIO", EIO},       {"EACCES", EACCES},   {"ENOENT", ENOENT},   {"EBUSY", EBUSY},
        {"EINVAL", EINVAL}, {"short", EOVERFLOW}, {"vanished", ENOENT},
    };
    for (const auto& [name, error] : cases) {
      world.faults->Set("kelo:red:top", "", *FaultNamed(name));
      EXPECT_EQ(WriteFile(kRed + "pattern", "1000 0 1000 0"), error) << name;
      EXPECT_EQ(fs::exists(kRed), std::string(name) != "vanished");
      world.faults->ClearAll();
      EXPECT_EQ(ReadFile(kRed + "pattern"), "") << name;
    }
    EXPECT_EQ(WriteFile(kRed + "pattern", "1000 0 1000 0"), 0);
    EXPECT_EQ(world.light.Describe(), (SLamp{"Red", "On"}));
  });
}

TEST(TheMountedHardware, EndsWhileAWriteBlocksAndAFileIsOpen) {
  RunInsideNamespace([] {
    const auto before = Names(kClasses);
    SWorld world;
    ASSERT_EQ(WriteFile(kRed + "trigger", "pattern"), 0);
    const int held = open((kGreen + "trigger").c_str(), O_WRONLY);
    int error = -1;
    auto writer = world.BlockedWrite(kRed + "pattern", "1000 0 1000 0", error);
    world.hardware.reset();
    writer.join();
    EXPECT_NE(error, -1);
    EXPECT_EQ(write(held, "none", 4), -1);
    close(held);
    EXPECT_EQ(Names(kClasses), before);
  });
}

TEST(TheMountedHardware, LeavesTheOtherDeviceClassesInSight) {
  RunInsideNamespace([] {
    auto expected = Names(kClasses);
    expected.insert("leds");
    const SWorld world;
    EXPECT_EQ(Names(kClasses), expected);
    EXPECT_EQ(Names(kClasses + "leds"),
              (std::set<std::string>{"kelo:red:top", "kelo:green:top", "kelo:blue:top"}));
    EXPECT_FALSE(fs::is_empty(kClasses + "net/lo/"));
  });
}

TEST(TheMountedHardware, IsOpenToAnUnprivilegedProcessStartedInside) {
  RunInsideNamespace([] {
    const SWorld world;
    const pid_t child = fork();
    if (child == 0) {
      const auto command = "echo pattern > " + kRed + "trigger && echo 9 0 9 0 > " + kRed +
                           "pattern && test $(cat " + kRed + "brightness) = 9";
      // Where there is another user to become.
      if (geteuid() == 0 && setuid(65534) != 0) _exit(2);
      execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
      _exit(3);
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(world.history->Since(0).back().text, "9 0 9 0\n");
  });
}

int Sound(const std::string& path, unsigned long divisor) {
  const int tone = open(path.c_str(), O_RDWR);
  if (tone < 0) return errno;
  const int error = ioctl(tone, KIOCSOUND, divisor) < 0 ? errno : 0;
  close(tone);
  return error;
}

TEST(TheMountedHardware, StandsInForASingleFileThatTakesRequests) {
  const TemporaryDirectory directory;
  const auto folder = directory.Path().string();
  directory.WriteFile("there", "the machine's own");
  RunInsideNamespace([&] {
    const auto clock = std::make_shared<ManualClock>();
    const auto faults = std::make_shared<CFaults>(clock);
    const auto file = std::make_shared<CToneFile>(faults, clock);
    CMountedHardware hardware({{"tone", file}});
    const auto failure =
        hardware.Start({{"tone", folder + "/there", false}, {"tone", folder + "/missing", false}});
    ASSERT_FALSE(failure) << *failure;
    unsigned divisor = 298;
    for (const auto* name : {"/there", "/missing"}) {
      EXPECT_EQ(Sound(folder + name, ++divisor), 0) << name;
      EXPECT_EQ(file->Last()->divisor, divisor) << name;
      faults->Set(kToneDevice, "", *FaultNamed("EIO"));
      EXPECT_EQ(Sound(folder + name, 1), EIO) << name;
      faults->Set(kToneDevice, "", *FaultNamed("vanished"));
      EXPECT_EQ(Sound(folder + name, 1), ENOENT) << name;
      faults->ClearAll();
      EXPECT_EQ(Sound(folder + name, 0), 0) << name;
    }
  });
  EXPECT_EQ(directory.ReadFile("there"), "the machine's own");
}

TEST(TheChargersHardware, StandsWhereTheDaemonLooksForIt) {
  const auto besides = Names("/var");
  RunInsideNamespace([&] {
    CChargerHardware hardware({.quickSensor = true});
    const auto failure = hardware.Start();
    ASSERT_FALSE(failure) << *failure;
    const std::string links = "/var/sysfs-links/";
    hardware.Sensor().SetLux(250.5);
    EXPECT_EQ(ReadFile(links + "light/iio:device0/in_illuminance_input"), "250.500000\n");
    EXPECT_EQ(WriteFile(links + "beeper/volume", "3"), 0);
    EXPECT_EQ(hardware.Attribute(kBeeperDevice, "volume"), "3");
    EXPECT_EQ(WriteFile(kRed + "trigger", "pattern"), 0);
    EXPECT_EQ(hardware.Attribute("kelo:red:top", "trigger"), "none [pattern]");
    EXPECT_EQ(hardware.LampWrites().End(), 1U) << "the lamp's only";
    EXPECT_EQ(Sound("/dev/tty0", 298), 0);
    EXPECT_EQ(hardware.Tone().End(), 1U);
    auto expected = besides;
    expected.insert("sysfs-links");
    EXPECT_EQ(Names("/var"), expected);
  });
}

}  // namespace
