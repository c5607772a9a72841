// One scenario, played in a charger of its own.
#pragma once

#include <string>

#include "virtualcharger/scenario/options.h"
#include "virtualcharger/scenario/scenario.h"
#include "virtualcharger/scenario/sections.h"

struct SRunResult {
  int status;  // to exit with
  STestSuite suite;
};

// Tells on the standard output what happens. Called once, while the process has one thread: it is
// in the charger's private namespace afterwards.
SRunResult PlayScenario(const SRunOptions& options, const std::string& file,
                        const SScenario& scenario);
