// The other chargers of this user on this machine, while they come and go.
#pragma once

#include <json/json.h>

#include <chrono>
#include <set>
#include <vector>

#include "virtualcharger/desk/filenotice.h"
#include "virtualcharger/page/deskregistry.h"

// Threads: one.
class COthers {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;

  // How long one that was killed may be listed where its file's notice came before its lock went.
  static constexpr std::chrono::seconds kLongestDoubt{2};

  // Has the folder of the running chargers watched. Throws std::system_error.
  COthers(const CDeskRegistry& registry, CFileNotice& files);

  // Where the watched folder changed, as its number among the changes says, or others are listed
  // and the last look was long ago.
  void Look(const std::set<int>& changed, TimePoint now);

  // [{name, url}], by name; the url shows the page and cannot steer: for everybody.
  Json::Value Addresses() const;

  // {name: token}: for those who may steer this charger.
  Json::Value Tokens() const;

 private:
  void Read();

  const CDeskRegistry& mRegistry;
  const int mFolder;
  TimePoint mLooked{};
  std::vector<SRunningCharger> mChargers;
};
