// One run of virtual-charger without a scenario, from the command line to the exit status.
#pragma once

#include "virtualcharger/scenario/options.h"

// Returns the exit status when the user interrupts it. Called while the process has one thread.
int RunDesk(const SRunOptions& options);
