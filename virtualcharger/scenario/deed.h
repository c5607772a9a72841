// Something that was begun at the charger and goes on by itself.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

// A step did not come out as it should: what was expected, and what was seen last and when.
class CStepFailure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Asked at each look at the charger: nothing while it goes on, at its end a note for people, mostly
// empty. Throws CStepFailure where it failed or takes too long. Not asked again after its end.
using Deed = std::function<std::optional<std::string>()>;

// One that has come to its end already.
Deed Done(std::string note = {});

// Ends when the condition holds; fails with the text when the limit, counted from now, is over.
Deed Until(const std::function<bool()>& condition, std::chrono::milliseconds limit,
           const std::string& failure);

// The first one, and then what its note leads to.
Deed Then(Deed first, std::function<Deed(const std::string& note)> next);

// Goes on until all have come to their ends, without a note.
Deed All(std::vector<Deed> deeds);
