#include "utils/words.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace {

constexpr double kLongestTime = 3600;  // s

// How many letters must be put in, taken out or exchanged to make one word the other.
std::size_t Distance(std::string_view from, std::string_view to) {
  std::vector<std::size_t> row(to.size() + 1);
  std::iota(row.begin(), row.end(), 0U);
  for (std::size_t i = 0; i < from.size(); ++i) {
    auto diagonal = row[0]++;
    for (std::size_t j = 0; j < to.size(); ++j) {
      const auto exchanged = diagonal + (from[i] == to[j] ? 0U : 1U);
      diagonal = row[j + 1];
      row[j + 1] = std::min({exchanged, row[j] + 1, row[j + 1] + 1});
    }
  }
  return row.back();
}

}  // namespace

std::optional<std::chrono::milliseconds> ParseTime(std::string_view word) {
  for (const auto& [unit, seconds] : {std::pair("ms", 0.001), std::pair("s", 1.0)}) {
    if (!word.ends_with(unit)) continue;
    const auto number =
        ParseNumber<double>(word.substr(0, word.size() - std::string_view(unit).size()));
    if (number && *number >= 0 && *number * seconds <= kLongestTime) {
      return std::chrono::milliseconds(std::llround(*number * seconds * 1000));
    }
  }
  return std::nullopt;
}

std::vector<std::string> Nearest(std::string_view word, std::vector<std::string> known,
                                 std::size_t count) {
  std::ranges::stable_sort(known, {}, [&](const auto& name) { return Distance(word, name); });
  known.resize(std::min(known.size(), count));
  return known;
}

std::string Hint(std::string_view word, const std::vector<std::string>& known) {
  const auto nearest = Nearest(word, known, 1);
  if (nearest.empty()) return {};
  const auto distance = Distance(word, nearest.front());
  if (distance > std::max<std::size_t>(2, word.size() / 3) || distance >= word.size()) return {};
  return fmt::format("; did you mean \"{}\"?", nearest.front());
}
