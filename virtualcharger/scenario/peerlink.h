// A peer in its own process, and the lines that go to it and come from it.
#pragma once

#include <poll.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "virtualcharger/peers/linebuffer.h"
#include "virtualcharger/scenario/childprocess.h"

// A command on its way to a peer and back.
struct SCommand {
  std::optional<std::string> outcome;  // as in peer.h
  bool lost = false;                   // the peer has ended before it answered
};

// Threads: one.
class CPeerLink {
 public:
  // An event of what the peer plays, such as "signal 111 Green/On"; the text may be empty.
  using EventHandler =
      std::function<void(const std::string& kind, std::int64_t number, const std::string& text)>;

  // The command without its end of the line; the peer's own log goes to the descriptor. Throws
  // std::system_error.
  CPeerLink(const std::vector<std::string>& command, int log, EventHandler onEvent);
  CPeerLink(const CPeerLink&) = delete;
  CPeerLink& operator=(const CPeerLink&) = delete;
  ~CPeerLink();

  CChildProcess& Process() { return *mProcess; }
  // To be polled: for what the peer tells, and for room where it has not taken all commands yet.
  pollfd Input() const;

  // Takes in what the peer has told since the last time, and hands on commands that had no room.
  void Look();

  bool IsServing() const { return mServing; }
  std::size_t Subscribers() const { return mSubscribers; }

  // Many may be on their way; the peer takes one after the other.
  std::shared_ptr<const SCommand> Send(const std::string& command);

 private:
  void HandOn();
  void Understand(const std::string& line);

  const EventHandler mOnEvent;
  int mDescriptor = -1;
  std::optional<CChildProcess> mProcess;
  CLineBuffer mLines;
  std::string mUnsent;
  bool mServing = false;
  std::size_t mSubscribers = 0;
  std::int64_t mLastNumber = 0;
  std::map<std::int64_t, std::shared_ptr<SCommand>> mCommands;  // without an outcome, by number
};
