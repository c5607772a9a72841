#include "virtualcharger/scenario/interrupt.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <csignal>

CInterrupt::CInterrupt() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  struct sigaction hangUp {};
  sigaction(SIGHUP, nullptr, &hangUp);
  if (hangUp.sa_handler != SIG_IGN) sigaddset(&signals, SIGHUP);  // not under nohup
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  mDescriptor = signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
}

CInterrupt::~CInterrupt() {
  close(mDescriptor);
}

void CInterrupt::Check() {
  signalfd_siginfo info{};
  if (read(mDescriptor, &info, sizeof info) == sizeof info) {
    throw CInterrupted(static_cast<int>(info.ssi_signo));
  }
}
