#include "virtualcharger/desk/pageopener.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <csignal>
#include <cstdlib>

namespace {

constexpr auto kOpener = "xdg-open";

bool HasDisplay() {
  // NOLINTNEXTLINE(concurrency-mt-unsafe): this process has one thread
  return std::getenv("DISPLAY") != nullptr || std::getenv("WAYLAND_DISPLAY") != nullptr;
}

// Waits for the page's address, which may never come.
[[noreturn]] void BecomeOpener(int input) {
  setsid();
  sigset_t none;
  sigemptyset(&none);
  pthread_sigmask(SIG_SETMASK, &none, nullptr);
  std::array<char, 256> url{};
  const auto size = read(input, url.data(), url.size() - 1);
  const int nothing = open("/dev/null", O_RDWR);
  for (int standard = 0; standard <= STDERR_FILENO; ++standard) dup2(nothing, standard);
  close_range(STDERR_FILENO + 1, UINT_MAX, 0);
  if (size > 0) execlp(kOpener, kOpener, url.data(), nullptr);
  _exit(0);
}

}  // namespace

CPageOpener::CPageOpener() {
  int ends[2];
  if (!HasDisplay() || pipe2(ends, O_CLOEXEC) != 0) return;
  mPipe = CDescriptor(ends[1]);
  const CDescriptor input(ends[0]);
  // Twice, so that nobody has to wait for the browser's end.
  const pid_t child = fork();
  if (child == 0) {
    if (fork() != 0) _exit(0);
    mPipe.Reset();
    BecomeOpener(input.Get());
  }
  if (child > 0) waitpid(child, nullptr, 0);
}

void CPageOpener::Open(const std::string& url) {
  if (!mPipe) return;
  [[maybe_unused]] const auto written = write(mPipe.Get(), url.data(), url.size());
  mPipe.Reset();
}
