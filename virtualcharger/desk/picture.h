// What the page shows of the charger at one moment.
#pragma once

#include <json/json.h>

#include "virtualcharger/desk/messages.h"
#include "virtualcharger/scenario/bench.h"

// The part of the "state" message that the bench tells; see docs/page.md.
Json::Value Picture(const CBench& bench, const CPageClock& clock);

// "running", "frozen", "starting", "stopped" or "dead".
std::string StatusName(const SProcessStatus& status);

// Errors and warnings that diagnostics holds as active.
std::vector<int> ActiveErrors(const CProcesses& processes);

// By device, attribute, fault and detail, in the words of the step "fault".
Json::Value FaultPictures(const CFaults& faults);

// 0 for silence.
double Hertz(const STone& tone);

// What the daemon makes of the ambient light, as long as it can read it.
int LightPercent(double lux);
