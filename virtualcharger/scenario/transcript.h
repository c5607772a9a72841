// What people read while a scenario runs: one line a step.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

#include "virtualcharger/scenario/bench.h"

// With colours on a terminal, unless NO_COLOR is set: then a swatch shows the lamp's light at its
// brightest, elsewhere a word says whether there is any. On a terminal the pattern text is cut to
// its width, and the step that waits is drawn in place.
class CTranscript {
 public:
  struct SStyle {
    bool colours;
    bool live;          // draws what waits
    std::size_t width;  // of a line, in columns
  };

  explicit CTranscript(std::FILE* output);
  CTranscript(std::FILE* output, const SStyle& style);

  void Header();
  // A step that only looks, at what the row above shows already, is one short line.
  void Step(const std::string& text, const SView& view);
  void FailedStep(const std::string& text, const SView& view);
  // What a step waits for, until the next line takes its place.
  void Progress(const std::string& step, std::chrono::milliseconds time, const std::string& text);
  void Clear();
  void Note(const std::string& text);
  // Several lines are set in below the first one.
  void Failure(const std::string& headline, const std::string& text);
  void Line(const std::string& text);

 private:
  void Row(const std::string& text, const SView& view, const std::string& verdict);

  std::FILE* const mOutput;
  const SStyle mStyle;
  const std::size_t mPatternWidth;
  std::string mShown;  // behind the step
  std::string mDrawn;  // without an end of the line
};
