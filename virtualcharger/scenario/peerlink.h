// A peer in its own process, and the lines that go to it and come from it.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "virtualcharger/peers/linebuffer.h"
#include "virtualcharger/scenario/childprocess.h"

// Threads: one.
class CPeerLink {
 public:
  // An event of what the peer plays, such as "signal 111 Green/On"; the text may be empty.
  using EventHandler =
      std::function<void(const std::string& kind, int number, const std::string& text)>;

  // The command without its end of the line; the peer's own log goes to the descriptor. Throws
  // std::system_error.
  CPeerLink(const std::vector<std::string>& command, int log, EventHandler onEvent);
  CPeerLink(const CPeerLink&) = delete;
  CPeerLink& operator=(const CPeerLink&) = delete;
  ~CPeerLink();

  CChildProcess& Process() { return *mProcess; }
  int Descriptor() const { return mDescriptor; }

  // Takes in what the peer has told since the last time.
  void Read();

  bool IsServing() const { return mServing; }
  std::size_t Subscribers() const { return mSubscribers; }

  // The number under which the outcome comes.
  std::uint64_t Send(const std::string& command);
  // Nothing while the command is not done with.
  std::optional<std::string> Outcome(std::uint64_t number) const;

 private:
  void Understand(const std::string& line);

  const EventHandler mOnEvent;
  int mDescriptor = -1;
  std::optional<CChildProcess> mProcess;
  CLineBuffer mLines;
  bool mServing = false;
  std::size_t mSubscribers = 0;
  std::uint64_t mLastNumber = 0;
  std::optional<std::pair<std::uint64_t, std::string>> mOutcome;  // the newest
};
