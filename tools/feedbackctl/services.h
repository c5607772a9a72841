// The charger's local services as this tool uses them.
#pragma once

#include <array>
#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "platform/ipc/diagnostics.pb.h"
#include "platform/ipc/genericcontrol.pb.h"
#include "platform/ipc/logconfig.pb.h"
#include "platform/rpc/appcommunicationhost.h"
#include "tools/feedbackctl/commandline.h"

class IDiagnostics;
class IGenericControl;

// The daemon's own, and those of its peers.
inline constexpr const char* kControlService = "FeedbackGenCtrl";
inline constexpr const char* kLogService = "FeedbackLog";
inline constexpr const char* kFeedbackService = "Feedback";
inline constexpr const char* kDiagnosticsService = "Diagnostics";
inline constexpr const char* kSessionManagerService = "SessionManager";
inline constexpr const char* kMeterService = "Meter1";
inline constexpr auto kServices =
    std::to_array<const char*>({kControlService, kLogService, kFeedbackService, kDiagnosticsService,
                                kSessionManagerService, kMeterService});

// Threads: one; what clients are told runs on a thread of this object, until it goes.
class CServices {
 public:
  // Throws std::runtime_error where --root leads to no store: without it, another daemon than the
  // one that is meant would be found.
  explicit CServices(const CInvocation& invocation);
  ~CServices();
  CServices(const CServices&) = delete;
  CServices& operator=(const CServices&) = delete;

  const std::string& Directory() const { return mDirectory; }

  // Empty when the service answers, else what happened.
  std::string WhyNoAnswer(const std::string& service) const;

  // Of all services, asked at once: each that hangs takes its time.
  std::map<std::string, std::string> ReasonsForSilence() const;

  // For one of the daemon's own: throws std::runtime_error that tells what to do when there is no
  // answer.
  void RequireAnswer(const std::string& service) const;

  // The client's calls fail while the service is not there.
  template <typename Interface>
  std::shared_ptr<Interface> Client(const std::string& service) {
    return mHost.CreateClient<Interface>(service)->GetInterface();
  }

  // A client of one of the daemon's own services, which answers.
  template <typename Interface>
  std::shared_ptr<Interface> Daemon(const std::string& service) {
    RequireAnswer(service);
    return Client<Interface>(service);
  }

 private:
  const std::string mDirectory;
  AppCommunicationHost<GrpcBackend> mHost;
  std::thread mNotifications;
};

// The state that the process reports when it is asked; empty when it has not reported any.
std::optional<ipc::EState> AwaitState(IGenericControl& control,
                                      std::chrono::milliseconds limit = std::chrono::seconds(2));

// The last value that was sent, with at least one datum; empty when diagnostics cannot say.
std::optional<ipc::MDiagnosticsSignal> LastSignal(
    IDiagnostics& diagnostics, ipc::ESignalIdentifier identifier,
    ipc::EInstanceType instance = ipc::EInstanceTypeAll);

// "info, console on".
std::string LogText(const ipc::MLogConfig& config);
