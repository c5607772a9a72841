#include <fmt/format.h>

#include "platform/rpc/interfaces/feedback.h"
#include "platform/rpc/interfaces/genericcontrol.h"
#include "platform/rpc/interfaces/logconfig.h"
#include "tools/feedbackctl/commands.h"
#include "tools/feedbackctl/services.h"
#include "tools/feedbackctl/words.h"
#include "utils/controltext.h"

namespace {

ipc::EInstanceType Instance(const CInvocation& invocation) {
  return static_cast<ipc::EInstanceType>(
      Choice(invocation.Option("--instance", "0"), "a connector", "N"));
}

int TellVerdict(const ipc::MResult& result, const CTool& tool) {
  if (result.result() == ipc::EResultOk) {
    tool.out << "taken\n";
    return kDone;
  }
  tool.err << fmt::format(
      "feedbackctl: the daemon refused: {}{}{}; \"feedbackctl status\" shows its state\n",
      ResultToString(result), result.text().empty() ? "" : ": ", result.text());
  return kFailed;
}

}  // namespace

int RunEnable(const CInvocation& invocation, const CTool& tool) {
  CServices services(invocation);
  return TellVerdict(services.Daemon<IGenericControl>(kControlService)->Enable(), tool);
}

int RunDisable(const CInvocation& invocation, const CTool& tool) {
  CServices services(invocation);
  return TellVerdict(services.Daemon<IGenericControl>(kControlService)->Disable(), tool);
}

int RunTrigger(const CInvocation& invocation, const CTool& tool) {
  ipc::MFbEventType event;
  event.set_event(
      static_cast<ipc::EFbEventType>(Choice(invocation.arguments[0], "a feedback event", "EVENT")));
  ipc::MInstanceType instance;
  instance.set_instance(Instance(invocation));
  CServices services(invocation);
  return TellVerdict(
      services.Daemon<IFeedback>(kFeedbackService)->TriggerFeedbackEvent(event, instance), tool);
}

int RunLogLevel(const CInvocation& invocation, const CTool& tool) {
  ipc::MLogConfig wanted;
  for (const auto& level : invocation.arguments) {
    wanted.set_level(static_cast<ipc::ELogLevel>(Choice(level, "a log level", "LEVEL")));
  }
  CServices services(invocation);
  const auto log = services.Daemon<ILogConfig>(kLogService);
  if (wanted.has_level()) {
    return TellVerdict(log->SetLogConfig(wanted), tool);
  }
  tool.out << LogText(log->GetLogConfig()) << '\n';
  return kDone;
}
