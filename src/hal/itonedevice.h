// The console's tone generator as the system calls reach it. Each returns what its call returns,
// and is repeated while a signal interrupts it.
//
// Threads: any.
#pragma once

class IToneDevice {
 public:
  virtual ~IToneDevice() = default;

  // Opens the terminal for reading and writing: a descriptor, or -1.
  virtual int Open(const char* path) = 0;

  // A divisor of the classic 1193180 Hz timer, 0 for silence. Negative on failure.
  virtual int SetTone(int descriptor, int divisor) = 0;

  virtual void Close(int descriptor) = 0;
};
