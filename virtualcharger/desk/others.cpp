#include "virtualcharger/desk/others.h"

#include <stdexcept>
#include <string>

COthers::COthers(const CDeskRegistry& registry, CFileNotice& files)
    : mRegistry(registry), mFolder(files.Add(RunningChargersFolder())) {
  Read();
}

void COthers::Look(const std::set<int>& changed, TimePoint now) {
  const bool inDoubt = !mChargers.empty() && now - mLooked >= kLongestDoubt;
  if (!inDoubt && !changed.contains(mFolder)) return;
  mLooked = now;
  Read();
}

void COthers::Read() {
  try {
    mChargers = mRegistry.Others();
  } catch (const std::runtime_error&) {
    mChargers.clear();  // nothing in a folder that is open to all can be trusted
  }
}

Json::Value COthers::Addresses() const {
  Json::Value list(Json::arrayValue);
  for (const auto& charger : mChargers) {
    Json::Value entry;
    entry["name"] = charger.name;
    entry["url"] = charger.url.substr(0, charger.url.find('#'));
    list.append(entry);
  }
  return list;
}

Json::Value COthers::Tokens() const {
  Json::Value tokens(Json::objectValue);
  for (const auto& charger : mChargers) {
    const auto hash = charger.url.find('#');
    if (hash != std::string::npos) tokens[charger.name] = charger.url.substr(hash + 1);
  }
  return tokens;
}
