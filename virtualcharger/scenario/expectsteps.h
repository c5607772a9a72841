// The steps that look at the charger.
#pragma once

#include "virtualcharger/scenario/steptable.h"

// All throw CParseError.
StepAction ParseExpectState(CArguments& arguments);
StepAction ParseExpectAlive(CArguments& arguments);
StepAction ParseExpectLamp(CArguments& arguments);
template <void (IObserver::*Expect)(int percent, IObserver::Limit within)>
StepAction ParseExpectPercent(CArguments& arguments);
StepAction ParseExpectSignal(CArguments& arguments);
StepAction ParseExpectAttribute(CArguments& arguments);
StepAction ParseExpectReport(CArguments& arguments);
StepAction ParseExpectNoReport(CArguments& arguments);
StepAction ParseExpectLog(CArguments& arguments);
StepAction ParseExpectNoLog(CArguments& arguments);
StepAction ParseExpectBeep(CArguments& arguments);
StepAction ParseExpectNoBeep(CArguments& arguments);
StepAction ParseExpectWritten(CArguments& arguments);
