// What people read while a scenario runs: one line a step.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

#include "virtualcharger/scenario/bench.h"

// With colours on a terminal, unless NO_COLOR is set: then a swatch shows the lamp's light at its
// brightest, elsewhere a word says whether there is any. On a terminal the pattern text is cut to
// its width.
class CTranscript {
 public:
  explicit CTranscript(std::FILE* output);
  CTranscript(std::FILE* output, bool colours, std::size_t width);

  void Header();
  // A step that only looks, at what the row above shows already, is one short line.
  void Step(const std::string& text, const SView& view);
  void Note(const std::string& text);
  // Several lines are set in below the first one.
  void Failure(const std::string& headline, const std::string& text);
  void Line(const std::string& text);

 private:
  std::FILE* const mOutput;
  const bool mColours;
  const std::size_t mPatternWidth;
  std::string mShown;  // behind the step
};
