// The steps that change something at the charger.
#pragma once

#include "virtualcharger/scenario/steptable.h"

// All throw CParseError.
template <ERequest Asked>
StepAction ParseRequest(CArguments& arguments);
template <EProcessAction Action>
StepAction ParseControl(CArguments& arguments);
StepAction ParseCard(CArguments& arguments);
StepAction ParseIdentify(CArguments& arguments);
StepAction ParseConnector(CArguments& arguments);
StepAction ParseError(CArguments& arguments);
StepAction ParseLight(CArguments& arguments);
StepAction ParseSet(CArguments& arguments);
StepAction ParseUnset(CArguments& arguments);
StepAction ParseMeter(CArguments& arguments);
StepAction ParseLogLevel(CArguments& arguments);
StepAction ParseInterrupt(CArguments& arguments);
StepAction ParseFault(CArguments& arguments);
StepAction ParseHeal(CArguments& arguments);
