// A scenario: the steps of a text file, one a line.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "virtualcharger/scenario/steptable.h"

struct SStep {
  int line;  // from 1
  std::string text;
  StepAction action;
  int rounds = 0;           // above 0: the steps up to the matching end are done so often
  bool endsRepeat = false;  // every repeat has its end
};

struct SScenario {
  std::vector<SStep> steps;
  std::vector<std::string> errors;  // "FILE:LINE: TEXT", one a line that is not understood
};

// The file is only named in the errors.
SScenario ParseScenario(const std::string& file, std::string_view text);

// Reads it from the file; one that cannot be read or has no steps is an error too.
SScenario ReadScenario(const std::string& file);
