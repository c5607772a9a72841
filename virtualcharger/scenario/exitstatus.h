// What virtual-charger exits with.
#pragma once

enum class EExit {
  AsExpected = 0,
  Failed = 1,
  Usage = 2,
  CannotRun = 3,
};

// Plus the signal's number, where one ended the run.
inline constexpr int kSignalled = 128;

constexpr int Status(EExit exit) {
  return static_cast<int>(exit);
}
