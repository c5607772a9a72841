// Words that people type: numbers and times, and what one that is not known may have meant.
#pragma once

#include <charconv>
#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

// Nothing where the word is something else or does not fit.
template <typename Value>
std::optional<Value> ParseNumber(std::string_view word) {
  Value value{};
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
  return error == std::errc() && end == word.data() + word.size() ? std::optional(value)
                                                                  : std::nullopt;
}

// "100ms", "2s", "1.5s", up to an hour. Nothing for another word.
std::optional<std::chrono::milliseconds> ParseTime(std::string_view word);
inline constexpr std::string_view kExpectedTime = "a time such as 100ms or 2s";

// The known names that are nearest to the word, the nearest one first.
std::vector<std::string> Nearest(std::string_view word, std::vector<std::string> known,
                                 std::size_t count);

// "; did you mean "NAME"?" with the known name that is nearest to the word, or nothing.
std::string Hint(std::string_view word, const std::vector<std::string>& known);
