// The virtual chargers that this user runs on this machine.
//
// Each has a file NAME.json in one folder: $XDG_RUNTIME_DIR/virtual-charger, or without that
// variable /tmp/virtual-charger-UID; mode 0700. The file is one JSON object:
//
//   {"name": "charger", "pid": 4711, "port": 8765, "url": "http://127.0.0.1:8765/#TOKEN",
//    "store": "/run/user/1000/charger-x3Yk1q/etc/ovra.json",
//    "sockets": "/run/user/1000/charger-x3Yk1q/run"}
//
// Who has the url steers the charger, so the file has mode 0600.
//
// Its charger holds a write lock on the file (fcntl, F_OFD_SETLK) until it ends, however it ends.
// So a file without a lock is what a killed charger left behind, and stands for nothing. Asking for
// the lock with F_OFD_GETLK disturbs nobody.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

struct SRunningCharger {
  std::string name{};
  pid_t pid = 0;
  std::uint16_t port = 0;  // of its page; 0 while it is starting
  std::string url{};       // of its page, with the token that it takes to steer
  std::string store{};     // the daemon's store
  std::string sockets{};   // the folder of the services' sockets
};

// Whether it is there or not. Without a slash at the end.
std::string RunningChargersFolder();

// Throws std::runtime_error where the folder is there and others could have written what is in it.
void CheckRunningChargersFolder();

// What an open file's lock says: its charger runs.
bool IsHeldByCharger(int file);

// What a file holds; nothing where it is no entry.
std::optional<SRunningCharger> ReadRunningCharger(const std::string& path);

// All that have started, by name. Throws as CheckRunningChargersFolder.
std::vector<SRunningCharger> RunningChargers();
