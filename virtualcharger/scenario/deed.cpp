#include "virtualcharger/scenario/deed.h"

#include <utility>

Deed Done(std::string note) {
  return [note = std::move(note)] { return std::optional(note); };
}

Deed Until(const std::function<bool()>& condition, std::chrono::milliseconds limit,
           const std::string& failure) {
  const auto end = std::chrono::steady_clock::now() + limit;
  return [=]() -> std::optional<std::string> {
    // The time first: what holds at the limit is in time.
    const bool over = std::chrono::steady_clock::now() >= end;
    if (condition()) return std::string();
    if (over) throw CStepFailure(failure);
    return std::nullopt;
  };
}

Deed Then(Deed first, std::function<Deed(const std::string& note)> next) {
  return [first = std::move(first), next = std::move(next),
          second = Deed()]() mutable -> std::optional<std::string> {
    if (!second) {
      const auto note = first();
      if (!note) return std::nullopt;
      second = next(*note);
    }
    return second();
  };
}

Deed All(std::vector<Deed> deeds) {
  return [deeds = std::move(deeds)]() mutable -> std::optional<std::string> {
    std::erase_if(deeds, [](const Deed& each) { return each().has_value(); });
    return deeds.empty() ? std::optional<std::string>("") : std::nullopt;
  };
}
