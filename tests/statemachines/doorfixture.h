#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tests/statemachines/doormachine.h"
#include "tests/support/logcapture.h"

class CDoorFixture : public testing::Test {
 protected:
  CDoorFixture() { mHandler->SetMachine(mMachine.get()); }

  template <typename Event, typename... Payload>
  std::future<bool> Post(Payload&&... payload) {
    auto event = std::make_shared<Event>(std::forward<Payload>(payload)...);
    auto handled = event->GetHandled();
    mMachine->PostEvent(std::move(event));
    return handled;
  }

  // Runs the machine until it has handled what is queued and what its actions have posted since.
  void RunUntilIdle() {
    for (int round = 0; round < 3; ++round) {
      Post<Halt>();
      mMachine->Run();
    }
  }

  template <typename... Events>
  void After() {
    (Post<Events>(), ...);
    RunUntilIdle();
    mLog.Clear();
  }

  template <typename Event, typename... Payload>
  bool Verdict(Payload&&... payload) {
    auto handled = Post<Event>(std::forward<Payload>(payload)...);
    RunUntilIdle();
    return handled.get();
  }

  // The trace of these events, without the lines of the event that makes Run return.
  template <typename... Events>
  std::vector<std::string> TraceOf() {
    mLog.Clear();
    (Post<Events>(), ...);
    RunUntilIdle();
    std::vector<std::string> lines;
    for (const auto& line : mLog.Lines()) {
      EXPECT_EQ(line.mLevel, Log::ELogLevel::ETrace) << line.mText;
      if (!line.mText.ends_with(" Halt")) {
        lines.push_back(line.mText);
      }
    }
    return lines;
  }

  LogCapture mLog;
  std::shared_ptr<CDoorHandler> mHandler = std::make_shared<CDoorHandler>();
  std::shared_ptr<CHsm<CDoorHandler>> mMachine = std::make_shared<CHsm<CDoorHandler>>(mHandler);
};
