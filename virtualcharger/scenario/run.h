// One run of virtual-charger, from the command line to the exit status.
#pragma once

#include "virtualcharger/scenario/options.h"

enum class EExit {
  AsExpected = 0,
  Failed = 1,
  Usage = 2,
  CannotRun = 3,
};

// Returns the exit status. Called while the process has one thread.
int Run(const SRunOptions& options);
