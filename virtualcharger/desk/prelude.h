// The steps that lead a new charger to where this one is.
#pragma once

#include <json/json.h>

#include <string>
#include <vector>

#include "virtualcharger/scenario/bench.h"

// The settings are those of a new charger and of this one, by their keys.
std::vector<std::string> StepsTo(const CBench& bench, const Json::Value& newSettings,
                                 const Json::Value& settings);

// The same for a recording, which expects the light that the charger shows then.
std::vector<std::string> Prelude(const CBench& bench, const Json::Value& newSettings,
                                 const Json::Value& settings);
