// The words that the page's controls offer: whatever a step can name.
#pragma once

#include <json/json.h>

#include "virtualcharger/desk/library.h"

Json::Value Vocabulary(const CLibrary& library);
