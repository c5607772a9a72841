// The person's charger, kept while scenarios are played on new ones.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "virtualcharger/desk/play.h"
#include "virtualcharger/desk/storepicture.h"

// Threads: one.
class CKeptCharger {
 public:
  // The settings are those of a new charger.
  CKeptCharger(const CBench& bench, Json::Value newSettings)
      : mBench(bench), mNewSettings(std::move(newSettings)) {}

  bool IsThere() const { return mKept.has_value(); }

  // A person's step begins. What a scenario has left becomes the person's charger by it.
  void Touch() { mTouched = true; }

  // Before a scenario begins. What is kept already stays where the charger is as the last scenario
  // left it. The settings are those that the daemon goes by.
  void Keep(const Json::Value& settings);
  // After it.
  void Leave();

  // What leads a new charger to the kept one.
  CPlay::SPlayed WayBack() const;
  // After that: the charger is the person's again. Throws std::runtime_error where the store cannot
  // be written.
  void Return();

 private:
  struct SKept {
    std::vector<std::string> steps;
    std::string store;  // its text; empty where there was none
    bool valid;         // a daemon can begin with it
  };

  SStorePicture Store() const;

  const CBench& mBench;
  const Json::Value mNewSettings;
  std::optional<SKept> mKept;
  std::string mLeft;  // the store's text behind the last scenario
  bool mTouched = false;
};
