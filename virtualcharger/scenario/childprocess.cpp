#include "virtualcharger/scenario/childprocess.h"

#include <fmt/format.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace {

constexpr int kCannotExecute = 127;

// Other threads may hold any lock at the fork: between here and exec only what is
// async-signal-safe.
[[noreturn]] void BecomeProgram(char* const* arguments, const CChildProcess::SStandard& standard,
                                pid_t parent) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) _exit(kCannotExecute);  // it had died before the line above
  setpgid(0, 0);  // Ctrl-C is for the parent, which ends its children in order
  dup2(standard.input, STDIN_FILENO);
  dup2(standard.output, STDOUT_FILENO);
  dup2(standard.error, STDERR_FILENO);
  close_range(STDERR_FILENO + 1, UINT_MAX, 0);
  sigset_t none;
  sigemptyset(&none);
  pthread_sigmask(SIG_SETMASK, &none, nullptr);
  signal(SIGPIPE, SIG_DFL);
  execv(arguments[0], arguments);
  _exit(kCannotExecute);
}

pid_t Start(const std::vector<std::string>& command, const CChildProcess::SStandard& standard) {
  std::vector<char*> arguments;
  for (const auto& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  const pid_t parent = getpid();
  const pid_t pid = fork();
  if (pid == 0) BecomeProgram(arguments.data(), standard, parent);
  if (pid < 0) throw std::system_error(errno, std::generic_category(), "no new process");
  return pid;
}

}  // namespace

const std::string& ThisProgram() {
  static const std::string path = std::filesystem::read_symlink("/proc/self/exe");
  return path;
}

CChildProcess::CChildProcess(const std::vector<std::string>& command, const SStandard& standard)
    : mPid(Start(command, standard)),
      mDescriptor(static_cast<int>(syscall(SYS_pidfd_open, mPid, 0))) {}

CChildProcess::~CChildProcess() {
  if (mDescriptor >= 0) close(mDescriptor);
  if (Ended()) return;
  kill(mPid, SIGKILL);
  while (waitpid(mPid, nullptr, 0) < 0 && errno == EINTR) {
  }
}

void CChildProcess::Signal(int signal) {
  if (!Ended()) kill(mPid, signal);
}

void CChildProcess::Freeze() {
  if (Ended() || mFrozen) return;
  kill(mPid, SIGSTOP);
  siginfo_t info{};
  while (waitid(P_PID, static_cast<id_t>(mPid), &info, WSTOPPED | WEXITED | WNOWAIT) < 0 &&
         errno == EINTR) {
  }
  mFrozen = info.si_code == CLD_STOPPED;
}

void CChildProcess::Thaw() {
  Signal(SIGCONT);
  mFrozen = false;
}

std::optional<int> CChildProcess::Ended() {
  int status = 0;
  while (!mStatus && waitpid(mPid, &status, WNOHANG | WUNTRACED | WCONTINUED) == mPid) {
    if (WIFSTOPPED(status) || WIFCONTINUED(status)) {
      mFrozen = WIFSTOPPED(status);  // maybe by somebody else
    } else {
      mStatus = status;
    }
  }
  return mStatus;
}

std::string DescribeEnd(int status) {
  if (WIFEXITED(status)) return fmt::format("exit status {}", WEXITSTATUS(status));
  // NOLINTNEXTLINE(concurrency-mt-unsafe): the text of a signal that there is stays as it is
  return fmt::format("signal {} ({})", WTERMSIG(status), strsignal(WTERMSIG(status)));
}
