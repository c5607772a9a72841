#include "virtualcharger/desk/storepicture.h"

#include "platform/kvconfig/storefile.h"
#include "utils/settingscatalogue.h"

SStorePicture ReadStorePicture(const std::string& path) {
  const auto store = KvConfig::ReadStore(path);
  SStorePicture picture{Json::Value(Json::objectValue), store.error};
  if (!store.root) return picture;
  for (const auto& setting : kSettings) {
    const auto& section = KvConfig::SectionOf(*store.root, std::string(setting.section));
    picture.settings[std::string(setting.key)] = section.get(std::string(setting.key), {});
  }
  return picture;
}
