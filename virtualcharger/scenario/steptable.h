// The kinds of steps that scenarios are made of: one table, from which the parser, the help and the
// error messages follow.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "virtualcharger/scenario/ibench.h"
#include "virtualcharger/scenario/iobserver.h"
#include "virtualcharger/scenario/words.h"

// What a step does: it begins a change, or it looks until what it expects is seen and returns a
// note for people, mostly empty. Both throw CStepFailure.
using Change = std::function<Deed(IBench&)>;
using Observation = std::function<std::string(IObserver&)>;
using StepAction = std::variant<Change, Observation>;

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
