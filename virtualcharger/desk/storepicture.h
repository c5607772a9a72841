// The daemon's settings as they are in the store.
#pragma once

#include <json/json.h>

#include <string>

struct SStorePicture {
  Json::Value settings;  // by key; null where the store has none
  std::string text;      // of the whole file
  std::string error;     // why the store cannot be read; the settings are empty then
};

SStorePicture ReadStorePicture(const std::string& path);
