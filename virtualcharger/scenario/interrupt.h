// SIGINT, SIGTERM and SIGHUP as something that can be looked at.
#pragma once

#include <exception>

// The user wants the run to end.
class CInterrupted : public std::exception {
 public:
  explicit CInterrupted(int signal) : mSignal(signal) {}
  int Signal() const { return mSignal; }

 private:
  const int mSignal;
};

// Blocks the signals for the thread that creates it and all that it starts; they stay blocked.
class CInterrupt {
 public:
  CInterrupt();
  CInterrupt(const CInterrupt&) = delete;
  CInterrupt& operator=(const CInterrupt&) = delete;
  ~CInterrupt();

  int Descriptor() const { return mDescriptor; }

  // Throws CInterrupted, once for each signal that came.
  void Check();

 private:
  int mDescriptor;
};
