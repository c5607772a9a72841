// An open descriptor that is closed with its owner.
#pragma once

#include <unistd.h>

#include <utility>

class CDescriptor {
 public:
  explicit CDescriptor(int descriptor = -1) : mDescriptor(descriptor) {}
  ~CDescriptor() { Reset(); }
  CDescriptor(CDescriptor&& other) noexcept : mDescriptor(other.Release()) {}
  CDescriptor& operator=(CDescriptor&& other) noexcept {
    if (this != &other) {
      Reset();
      mDescriptor = other.Release();
    }
    return *this;
  }

  int Get() const { return mDescriptor; }
  explicit operator bool() const { return mDescriptor >= 0; }
  int Release() { return std::exchange(mDescriptor, -1); }
  void Reset() {
    if (mDescriptor >= 0) {
      close(std::exchange(mDescriptor, -1));
    }
  }

 private:
  int mDescriptor;
};
