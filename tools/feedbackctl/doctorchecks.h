// What a doctor looks at, one line a check.
#pragma once

#include <string>
#include <vector>

#include "tools/feedbackctl/services.h"

enum class EVerdict { EOk, EWarning, EFailed };

struct SCheck {
  EVerdict verdict;
  std::string name;
  std::string found;
  std::string remedy;  // what to do about it; empty when nothing is wrong
};

using Checks = std::vector<SCheck>;

// Each key of the store. Before any RPC object exists (CommunicationProblems).
Checks CheckStoreFile(const CInvocation& invocation);

// Whether the sockets' directory is there and this user may use it.
SCheck CheckSocketDirectory(const std::string& directory);

// Whether somebody answers, of the daemon's own services and its peers'; then the daemon's state
// and its log level, where it answers.
Checks CheckServices(const CInvocation& invocation, CServices& services);

// The attributes of lamp, light sensor and buzzer, as the daemon sees them and for its user; for
// the caller where no daemon runs.
Checks CheckHardware(const CInvocation& invocation, const CServices& services);
