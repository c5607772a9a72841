// The kinds of steps that scenarios are made of: one table, from which the parser, the help and the
// error messages follow.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "virtualcharger/scenario/icharger.h"
#include "virtualcharger/scenario/words.h"

// Does the step and returns a note for people, mostly empty. Throws CStepFailure.
using StepAction = std::function<std::string(ICharger&)>;

struct SStepKind {
  std::string_view word;  // of two words where the first one alone does not decide
  std::string_view syntax;
  std::string_view help;
  std::string_view example;
  StepAction (*parse)(CArguments& arguments);  // throws CParseError
};

const std::vector<SStepKind>& StepKinds();

// What "kill" and its like can name.
const std::vector<std::string>& ProcessNames();

// The step that a line's words say, at least one. Throws CParseError.
StepAction ParseStep(const std::vector<std::string>& words);
