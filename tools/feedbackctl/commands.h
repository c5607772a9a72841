// The commands; CCommand::run says what they throw.
#pragma once

#include "tools/feedbackctl/commandline.h"

int RunStatus(const CInvocation& invocation, const CTool& tool);
int RunWatch(const CInvocation& invocation, const CTool& tool);
int RunLamp(const CInvocation& invocation, const CTool& tool);
int RunDoctor(const CInvocation& invocation, const CTool& tool);
int RunEnable(const CInvocation& invocation, const CTool& tool);
int RunDisable(const CInvocation& invocation, const CTool& tool);
int RunTrigger(const CInvocation& invocation, const CTool& tool);
int RunLogLevel(const CInvocation& invocation, const CTool& tool);
int RunGet(const CInvocation& invocation, const CTool& tool);
int RunSet(const CInvocation& invocation, const CTool& tool);
int RunSignals(const CInvocation& invocation, const CTool& tool);
int RunCheckConfig(const CInvocation& invocation, const CTool& tool);
int RunCompletion(const CInvocation& invocation, const CTool& tool);
int RunChargers(const CInvocation& invocation, const CTool& tool);
