// Writes down what a person does with the charger, as a scenario that can be played again: the
// steps, the time between them, and what the charger showed after each.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

// Lamp and display count when they stay for a moment, so that the way from one light to another is
// not expected again step by step. What the charger shows needs no wait: the expectation waits.
//
// Threads: one.
class CRecorder {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;

  // What the charger shows at one moment.
  struct SShown {
    std::string lamp;            // "blue pulsating"
    std::string state;           // of the daemon; empty while it does not run
    std::optional<int> display;  // percent
    unsigned beeps = 0;          // that have ended
  };

  // The steps before lead a new charger to where this one is.
  void Begin(TimePoint now, std::vector<std::string> before, const SShown& shown);
  void End(TimePoint now);
  bool IsOn() const { return mOn; }

  // A recording that is forgotten ends by itself after so many lines, and says so in its text.
  static constexpr std::size_t kMostLines = 2000;
  bool IsFull() const { return mLines.size() > kMostLines; }

  // A step begins; its place is for Ended.
  std::size_t Step(TimePoint now, const std::string& line);
  // A step that was refused is expected to be refused again; one that failed stays as a comment.
  void Ended(std::size_t place, bool ok, const std::string& text);

  // Whenever it may have changed.
  void Show(TimePoint now, const SShown& shown);

  // The scenario up to now.
  std::string Text() const;

 private:
  struct SLine {
    TimePoint time;
    std::string text;
    bool expectation;
  };
  // A value that is shown, and the one that was written down last.
  struct SValue {
    std::string shown;
    TimePoint since;
    std::string written;
  };

  void Add(TimePoint time, const std::string& text, bool expectation);
  void Look(SValue& value, TimePoint now, const std::string& shown);
  void Write(SValue& value, const std::string& step, bool when);
  void WriteLamp(TimePoint now, bool last);

  bool mOn = false;
  std::vector<std::string> mBefore;
  std::vector<SLine> mLines;
  SValue mLamp;
  SValue mState;
  SValue mDisplay;
  unsigned mBeeps = 0;
  TimePoint mBegin;
};
