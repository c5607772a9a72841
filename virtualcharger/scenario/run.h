// One run of virtual-charger, from the command line to the exit status.
#pragma once

#include "virtualcharger/scenario/exitstatus.h"
#include "virtualcharger/scenario/options.h"

// Returns the exit status. Called while the process has one thread.
int Run(const SRunOptions& options);
