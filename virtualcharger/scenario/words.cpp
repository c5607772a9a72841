#include "virtualcharger/scenario/words.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <utility>

#include "utils/words.h"

namespace {

void CheckCharacters(std::string_view line) {
  const auto found = std::ranges::find_if(line, [](char character) {
    const auto code = static_cast<unsigned char>(character);
    return (code < ' ' && character != '\t' && character != '\r') || code == 0x7f;
  });
  if (found == line.end()) return;
  throw CParseError(fmt::format("the control character {:#04x} at place {}; leave it out",
                                static_cast<unsigned char>(*found), found - line.begin() + 1));
}

}  // namespace

std::vector<std::string> SplitWords(std::string_view line) {
  CheckCharacters(line);
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

std::string Quoted(const std::string& text) {
  return text.find('"') == std::string::npos ? '"' + text + '"' : text;
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
  throw CParseError(fmt::format("\"{}\" is not {}{}", word, expected,
                                hint.empty() && !known.empty() && known.size() <= kFew
                                    ? fmt::format(": {}", fmt::join(known, ", "))
                                    : hint));
}

int CArguments::Number(std::string_view expected, int least, int most) {
  const auto word = Word(expected);
  const auto number = ParseNumber<int>(word);
  if (!number || *number < least || *number > most) {
    throw CParseError(fmt::format("\"{}\" is not {} from {} to {}", word, expected, least, most));
  }
  return *number;
}

double CArguments::Decimal(std::string_view expected, double least, double most) {
  const auto word = Word(expected);
  const auto number = ParseNumber<double>(word);
  if (number && *number >= least && *number <= most) return *number;
  throw CParseError(fmt::format("\"{}\" is not {} from {} to {}", word, expected, least, most));
}

std::chrono::milliseconds CArguments::Time() {
  const auto word = Word(kExpectedTime);
  if (const auto time = ParseTime(word)) return *time;
  throw CParseError(fmt::format("\"{}\" is not {} (an hour at most)", word, kExpectedTime));
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
