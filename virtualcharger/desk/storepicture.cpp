#include "virtualcharger/desk/storepicture.h"

#include <utility>

#include "platform/kvconfig/storefile.h"
#include "utils/settingscatalogue.h"

SStorePicture ReadStorePicture(const std::string& path) {
  auto store = KvConfig::ReadStore(path);
  SStorePicture picture{Json::Value(Json::objectValue), std::move(store.text), store.error};
  if (!store.root) return picture;
  for (const auto& setting : kSettings) {
    const auto& section = KvConfig::SectionOf(*store.root, std::string(setting.section));
    picture.settings[std::string(setting.key)] = section.get(std::string(setting.key), {});
  }
  return picture;
}
