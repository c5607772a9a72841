// The words of a scenario, and what is said about one that is not understood.
#pragma once

#include <chrono>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

// What is wrong with a line, and what was expected.
class CParseError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Words are separated by blanks; one in double quotes keeps its blanks. A word that begins with '#'
// begins a comment. Throws CParseError for a quote without its end and for a control character.
std::vector<std::string> SplitWords(std::string_view line);

// As one word of a line that is split again. A text with both blanks and quotes has none.
std::string Quoted(const std::string& text);

// "SuspendedByCar" becomes "suspended-by-car".
std::string DashedName(std::string_view name);

// The words after a step's own, taken one after the other. Throws CParseError.
class CArguments {
 public:
  explicit CArguments(std::vector<std::string> words) : mWords(std::move(words)) {}

  // The next word; "expected" tells people what is missing.
  std::string Word(std::string_view expected);
  // The place of the next word among the known ones.
  std::size_t Choice(std::string_view expected, const std::vector<std::string>& known);
  int Number(std::string_view expected, int least, int most);
  double Decimal(std::string_view expected, double least, double most);
  // "100ms", "2s", "1.5s".
  std::chrono::milliseconds Time();
  // Takes the next word if it is this one.
  bool Take(std::string_view word);
  bool IsAtEnd() const { return mNext == mWords.size(); }
  // Nothing may be left.
  void End() const;

  // The next word without taking it; empty at the end.
  std::string_view Peek() const;

 private:
  const std::vector<std::string> mWords;
  std::size_t mNext = 0;
};
