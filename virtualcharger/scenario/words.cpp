#include "virtualcharger/scenario/words.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <charconv>
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

template <typename Value>
std::optional<Value> Whole(std::string_view word) {
  Value value{};
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
  return error == std::errc() && end == word.data() + word.size() ? std::optional(value)
                                                                  : std::nullopt;
}

}  // namespace

std::vector<std::string> SplitWords(std::string_view line) {
  std::vector<std::string> words;
  for (;;) {
    line.remove_prefix(std::min(line.find_first_not_of(" \t\r"), line.size()));
    if (line.empty() || line.front() == '#') return words;
    const bool quoted = line.front() == '"';
    if (quoted) line.remove_prefix(1);
    auto end = line.find_first_of(quoted ? "\"" : " \t\r");
    if (quoted && end == std::string_view::npos) {
      throw CParseError("a quoted text without its closing quote");
    }
    end = std::min(end, line.size());
    words.emplace_back(line.substr(0, end));
    line.remove_prefix(quoted ? end + 1 : end);
  }
}

std::string Hint(std::string_view word, const std::vector<std::string>& known) {
  const auto nearest =
      std::min_element(known.begin(), known.end(), [&](const auto& left, const auto& right) {
        return Distance(word, left) < Distance(word, right);
      });
  if (nearest == known.end() ||
      Distance(word, *nearest) > std::max<std::size_t>(2, word.size() / 3)) {
    return {};
  }
  return fmt::format("; did you mean \"{}\"?", *nearest);
}

std::string DashedName(std::string_view name) {
  std::string dashed;
  for (const char letter : name) {
    const auto byte = static_cast<unsigned char>(letter);
    if (std::isupper(byte) != 0 && !dashed.empty()) dashed += '-';
    dashed += static_cast<char>(std::tolower(byte));
  }
  return dashed;
}

std::optional<int> WholeNumber(std::string_view word) {
  return Whole<int>(word);
}

std::string CArguments::Word(std::string_view expected) {
  if (mNext == mWords.size()) throw CParseError(fmt::format("{} is missing", expected));
  return mWords[mNext++];
}

std::size_t CArguments::Choice(std::string_view expected, const std::vector<std::string>& known) {
  const auto word = Word(expected);
  const auto found = std::find(known.begin(), known.end(), word);
  if (found != known.end()) return static_cast<std::size_t>(found - known.begin());
  const auto hint = Hint(word, known);
  constexpr std::size_t kFew = 16;
  throw CParseError(fmt::format(
      "\"{}\" is not {}{}", word, expected,
      hint.empty() && known.size() <= kFew ? fmt::format(": {}", fmt::join(known, ", ")) : hint));
}

int CArguments::Number(std::string_view expected, int least, int most) {
  const auto word = Word(expected);
  const auto number = WholeNumber(word);
  if (!number || *number < least || *number > most) {
    throw CParseError(fmt::format("\"{}\" is not {} from {} to {}", word, expected, least, most));
  }
  return *number;
}

double CArguments::Decimal(std::string_view expected, double least, double most) {
  const auto word = Word(expected);
  const auto number = Whole<double>(word);
  if (number && *number >= least && *number <= most) return *number;
  throw CParseError(fmt::format("\"{}\" is not {} from {} to {}", word, expected, least, most));
}

std::chrono::milliseconds CArguments::Time() {
  constexpr auto expected = "a time such as 100ms or 2s";
  const auto word = Word(expected);
  const std::string_view text = word;
  for (const auto& [unit, seconds] : {std::pair("ms", 0.001), std::pair("s", 1.0)}) {
    if (!text.ends_with(unit)) continue;
    const auto number = Whole<double>(text.substr(0, text.size() - std::string_view(unit).size()));
    if (number && *number >= 0 && *number * seconds <= kLongestTime) {
      return std::chrono::milliseconds(std::llround(*number * seconds * 1000));
    }
  }
  throw CParseError(fmt::format("\"{}\" is not {} (an hour at most)", word, expected));
}

bool CArguments::Take(std::string_view word) {
  const bool taken = Peek() == word;
  if (taken) ++mNext;
  return taken;
}

void CArguments::End() const {
  if (mNext < mWords.size()) {
    throw CParseError(fmt::format("\"{}\" is too much", mWords[mNext]));
  }
}

std::string_view CArguments::Peek() const {
  return mNext < mWords.size() ? std::string_view(mWords[mNext]) : std::string_view();
}
