// The virtual chargers that run on this machine.
#pragma once

#include "utils/runningchargers.h"

// Throws std::runtime_error that names those that run where none has the name.
SRunningCharger FindCharger(const std::string& name);
