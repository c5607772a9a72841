// A program started by this one, which does not outlive it.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

// The path of this program's own file. First asked for before the mounts change: in a root of its
// own (chroot) the kernel names the file differently afterwards.
const std::string& ThisProgram();

// Threads: one, which lives as long as the child may.
class CChildProcess {
 public:
  // Descriptors become the child's standard ones; none other is inherited, no signal is
  // blocked, and SIGPIPE has its default action.
  struct SStandard {
    int input;
    int output;
    int error;
  };

  // The first word is the program's path. Throws std::system_error where no process can be made; a
  // program that cannot be executed ends with status 127.
  CChildProcess(const std::vector<std::string>& command, const SStandard& standard);
  CChildProcess(const CChildProcess&) = delete;
  CChildProcess& operator=(const CChildProcess&) = delete;

  // Kills what still runs.
  ~CChildProcess();

  void Signal(int signal);

  // Return when it really stands still, or goes on.
  void Freeze();
  void Thaw();
  bool IsFrozen() const { return mFrozen; }

  // How it ended, as waitpid tells; nothing while it runs.
  std::optional<int> Ended();

  // Readable when it has ended. Below 0 where the kernel has no such thing.
  int Descriptor() const { return mDescriptor; }

 private:
  const pid_t mPid;
  const int mDescriptor;
  bool mFrozen = false;
  std::optional<int> mStatus;
};

// "exit status 1" or "signal 9 (Killed)".
std::string DescribeEnd(int status);
