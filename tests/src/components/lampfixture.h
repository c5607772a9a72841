// The real lamp, channels included, on attributes in memory, and what an eye makes of those.
#pragma once

#include <gmock/gmock.h>

#include <barrier>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "platform/diagnostics/diagnosticscommclient.h"
#include "src/components/ledcontrol.h"
#include "src/hal/led.h"
#include "tests/support/fakediagnostics.h"
#include "tests/support/fakesysfs.h"
#include "tests/support/logcapture.h"

// "On", "Pulsating", "Flashing" or "Blink1" to "Blink10"; "" for dark; another pattern as it is.
inline std::string ModeOfPattern(const std::string& pattern) {
  static const std::map<std::string, std::string> modes{{"0 0 0 0", ""},
                                                        {"1000 0 1000 0", "On"},
                                                        {"1000 2500 0 2500 ", "Pulsating"},
                                                        {"1000 167 1000 0 0 167 0 0 ", "Flashing"}};
  if (const auto mode = modes.find(pattern); mode != modes.end()) {
    return mode->second;
  }
  const std::string pulse = "1000 250 1000 0 0 250 0 0 ";
  std::string rest = pattern;
  int pulses = 0;
  for (; rest.starts_with(pulse); ++pulses) {
    rest.erase(0, pulse.size());
  }
  const std::string pause =
      pulses == 10 ? "" : "0 " + std::to_string(500 * (10 - pulses)) + " 0 0 ";
  return pulses > 0 && rest == pause ? "Blink" + std::to_string(pulses) : pattern;
}

class CLampFixture : public testing::Test {
 protected:
  CLampFixture() { CDiagnosticsCommClient::Initialize(mDiagnostics); }
  ~CLampFixture() override { CDiagnosticsCommClient::Terminate(); }

  std::shared_ptr<ILed> Channel(const std::string& name) {
    return std::make_shared<CLed>(mChannels.at(name));
  }

  std::shared_ptr<CLedControl> CreateLedControl() {
    return std::make_shared<CLedControl>(Channel("red"), Channel("green"), Channel("blue"));
  }

  // Runs the actions at the same time, each on a thread of its own.
  static void AtOnce(const std::vector<std::function<void()>>& actions) {
    std::barrier start(std::ssize(actions));
    std::vector<std::thread> threads;
    for (const auto& action : actions) {
      threads.emplace_back([&] {
        start.arrive_and_wait();
        action();
      });
    }
    for (std::thread& thread : threads) {
      thread.join();
    }
  }

  // Colour and mode, for example "Yellow/Blink3", or "Dark"; "Mixed" when the lit channels differ.
  std::string Lamp() const {
    static const std::map<std::set<std::string>, std::string> colors{
        {{"red"}, "Red"},
        {{"green"}, "Green"},
        {{"blue"}, "Blue"},
        {{"red", "green"}, "Yellow"},
        {{"red", "green", "blue"}, "White"}};
    std::set<std::string> lit;
    std::set<std::string> modes;
    for (const auto& [name, channel] : mChannels) {
      if (const std::string mode = ModeOfPattern(channel->Value("pattern")); !mode.empty()) {
        lit.insert(name);
        modes.insert(mode);
      }
    }
    if (lit.empty()) {
      return "Dark";
    }
    return modes.size() == 1 && colors.contains(lit) ? colors.at(lit) + "/" + *modes.begin()
                                                     : "Mixed";
  }

  // The lowest and the highest level of the lit channels, for example "0..1000".
  std::string Limits() const {
    std::set<std::string> limits;
    for (const auto& [name, channel] : mChannels) {
      if (!ModeOfPattern(channel->Value("pattern")).empty()) {
        limits.insert(channel->Value("min_pattern_brightness") + ".." +
                      channel->Value("max_pattern_brightness"));
      }
    }
    return limits.size() == 1 ? *limits.begin() : "Mixed";
  }

  // The values of the signal "LED state" that were sent, the oldest first.
  std::vector<std::string> Reports() const {
    std::vector<std::string> values;
    for (const auto& signal : mDiagnostics->Sent()) {
      EXPECT_EQ(signal.identifier(), 111);
      EXPECT_EQ(signal.instance().instance(), 0);
      EXPECT_EQ(signal.data_size(), 1);
      values.push_back(signal.data(0).string_value());
    }
    return values;
  }

  LogCapture mLog{Log::ELogLevel::EWarning};
  const std::shared_ptr<CFakeDiagnostics> mDiagnostics = std::make_shared<CFakeDiagnostics>();
  const std::shared_ptr<CWriteHistory> mHistory = std::make_shared<CWriteHistory>();
  const std::map<std::string, std::shared_ptr<CFakeSysfs>> mChannels{
      {"red", std::make_shared<CFakeSysfs>("red", mHistory)},
      {"green", std::make_shared<CFakeSysfs>("green", mHistory)},
      {"blue", std::make_shared<CFakeSysfs>("blue", mHistory)}};
};
