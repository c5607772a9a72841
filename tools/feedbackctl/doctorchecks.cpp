#include "tools/feedbackctl/doctorchecks.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <stdexcept>

#include "platform/rpc/communicationexception.h"
#include "platform/rpc/interfaces/genericcontrol.h"
#include "platform/rpc/interfaces/logconfig.h"
#include "tools/feedbackctl/settingtext.h"
#include "tools/feedbackctl/socketprobe.h"
#include "tools/feedbackctl/storecheck.h"
#include "tools/feedbackctl/words.h"
#include "utils/controltext.h"
#include "utils/settingscatalogue.h"

namespace {

SCheck CheckState(CServices& services) {
  const auto state = AwaitState(*services.Client<IGenericControl>(kControlService));
  const auto text = state ? StateToString(*state) : "not reported";
  const auto check = [&](EVerdict verdict, const char* remedy) {
    return SCheck{verdict, "daemon", text, remedy};
  };
  switch (state.value_or(ipc::EStateInvalid)) {
    case ipc::EStateEnabled:
      return check(EVerdict::EOk, "");
    case ipc::EStateUninitialized:
    case ipc::EStateDisabled:
      return check(
          EVerdict::EWarning,
          "the board controller enables it, or \"feedbackctl disable\" and then \"enable\"");
    case ipc::EStateFatalError:
      return check(EVerdict::EFailed, "correct the store, then restart the daemon");
    default:
      return check(EVerdict::EFailed, "look into its log and restart it");
  }
}

SCheck CheckLogLevel(CServices& services) {
  const auto config = services.Client<ILogConfig>(kLogService)->GetLogConfig();
  const auto level = KnownWords("LEVEL").at(static_cast<std::size_t>(config.level()));
  if (config.level() <= ipc::ELogLevelDebug) {
    return {EVerdict::EWarning, "log level", level,
            "many lines a second: \"feedbackctl log-level info\""};
  }
  if (config.level() == ipc::ELogLevelOff) {
    return {EVerdict::EWarning, "log level", level, "says nothing: \"feedbackctl log-level info\""};
  }
  return {EVerdict::EOk, "log level", level, ""};
}

std::string Remedy(const std::string& service, const std::string& reason) {
  if (reason.ends_with(kRefusesUser)) {
    return "become root, or name the user in the store's AllowedUsers";
  }
  if (reason.ends_with(kHangs)) {
    return "the process hangs or is stopped: let it go on, or restart it";
  }
  const bool isOwn =
      service == kControlService || service == kLogService || service == kFeedbackService;
  return isOwn ? "start the daemon"
               : "start the process that offers it; the daemon finds it by itself";
}

SCheck CheckService(const std::string& service, const std::string& reason,
                    const CInvocation& invocation) {
  if (reason.empty()) {
    return {EVerdict::EOk, service, "answers", ""};
  }
  if (service == kMeterService &&
      !EffectiveSetting(invocation.Store(), Settings::kHardwareSection, Settings::kHasMeterDisplay)
           .asBool()) {
    return {EVerdict::EOk, service, "not needed: HwHasMeterDisplay is false", ""};
  }
  return {EVerdict::EFailed, service, reason, Remedy(service, reason)};
}

}  // namespace

Checks CheckStoreFile(const CInvocation& invocation) {
  const auto path = invocation.Store();
  Checks checks;
  const auto add = [&](EVerdict verdict, const std::string& found, const std::string& remedy) {
    checks.push_back({verdict, "store", found, remedy});
  };
  try {
    const auto [problems, hints] = CheckStore(path);
    for (const auto& problem : problems) {
      add(EVerdict::EFailed, problem, "correct it with \"feedbackctl set\" or an editor");
    }
    for (const auto& hint : hints) {
      if (hint.find("did you mean") != std::string::npos) {
        add(EVerdict::EWarning, hint, "other programs may use it");
      }
    }
    if (problems.empty()) {
      add(EVerdict::EOk, path, "");
    }
  } catch (const std::runtime_error& error) {
    add(EVerdict::EFailed, error.what(),
        "write one; an empty object, {}, means all defaults, also for where the sockets are");
  }
  return checks;
}

SCheck CheckSocketDirectory(const std::string& directory) {
  const auto check = [&](EVerdict verdict, const std::string& found, const std::string& remedy) {
    return SCheck{verdict, "socket directory", directory + found, remedy};
  };
  struct stat status {};
  if (stat(directory.c_str(), &status) != 0) {
    return check(EVerdict::EFailed, " is missing", "the daemon makes it when it starts");
  }
  if (!S_ISDIR(status.st_mode)) {
    return check(EVerdict::EFailed, " is no directory", "remove it and restart the daemon");
  }
  if (access(directory.c_str(), R_OK | X_OK) != 0) {
    return check(EVerdict::EFailed, " is closed to this user",
                 "become root or a member of its group");
  }
  if ((status.st_mode & S_IWOTH) != 0) {
    return check(EVerdict::EWarning, " is open to everybody's sockets",
                 fmt::format("chmod o-w {}", directory));
  }
  return check(EVerdict::EOk, "", "");
}

Checks CheckServices(const CInvocation& invocation, CServices& services) {
  Checks checks;
  const auto reasons = services.ReasonsForSilence();
  for (const auto* service : kServices) {
    checks.push_back(CheckService(service, reasons.at(service), invocation));
  }
  for (const auto& [service, check] :
       {std::pair(kControlService, &CheckState), std::pair(kLogService, &CheckLogLevel)}) {
    if (!reasons.at(service).empty()) {
      continue;
    }
    try {
      checks.push_back(check(services));
    } catch (const Rpc::CommunicationException& error) {
      checks.push_back({EVerdict::EFailed, service, error.what(), "restart the daemon"});
    }
  }
  return checks;
}
