// Several scenarios, one after the other, each in a process and a charger of its own.
#pragma once

#include <string>

#include "virtualcharger/scenario/options.h"

// In the child of a batch: where it writes its suite for JUnit to. The parent reads it there.
inline constexpr int kSuiteDescriptor = 0;

// Returns the worst exit status; the suites for JUnit are added to the text.
int PlayBatch(const SRunOptions& options, std::string& suites);
