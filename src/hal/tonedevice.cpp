#include "src/hal/tonedevice.h"

#include <fcntl.h>
#include <linux/kd.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "platform/log/log.h"

namespace {

// What the callers log has no room for the reason.
void LogFailure(const char* operation) {
  LOG(Debug, "Cannot {} the tone device: {}", operation, std::generic_category().message(errno));
}

template <typename SystemCall>
int Retry(const char* operation, SystemCall systemCall) {
  int result = systemCall();
  while (result < 0 && errno == EINTR) {
    result = systemCall();
  }
  if (result < 0) {
    LogFailure(operation);
  }
  return result;
}

}  // namespace

void SwitchToneOff() {
  CToneDevice device;
  const int descriptor = device.Open(kTonePath);
  if (descriptor >= 0) {
    device.SetTone(descriptor, 0);
    device.Close(descriptor);
  }
}

int CToneDevice::Open(const char* path) {
  return Retry("open", [path] { return open(path, O_RDWR | O_NOCTTY | O_CLOEXEC); });
}

int CToneDevice::SetTone(int descriptor, int divisor) {
  // The kernel reads the whole argument word.
  const auto argument = static_cast<unsigned long>(divisor);
  return Retry("use", [=] { return ioctl(descriptor, KIOCSOUND, argument); });
}

void CToneDevice::Close(int descriptor) {
  // An interrupted close has closed the descriptor all the same; repeating it could hit a new one.
  if (close(descriptor) < 0 && errno != EINTR) {
    LogFailure("close");
  }
}
