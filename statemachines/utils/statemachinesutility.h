// Joins a state machine to those who ask things of the process, and to those who watch it.
#pragma once

#include <memory>
#include <utility>

#include "platform/ipc/common.pb.h"
#include "platform/ipc/genericcontrol.pb.h"
#include "platform/log/log.h"
#include "statemachines/feedbackhsmevents.h"
#include "statemachines/hsminterface.h"

// Posts a new event with this payload and waits, without a time limit, for the machine's verdict:
// Ok where the machine takes it, Illegal where not. Throws std::future_error when the machine drops
// it. Never on the machine's own thread.
template <typename Event, typename... Payload>
ipc::MResult PostAndWait(IHsmInterface& machine, Payload&&... payload) {
  auto event = std::make_shared<Event>(std::forward<Payload>(payload)...);
  auto handled = event->GetHandled();
  machine.PostEvent(std::move(event));
  ipc::MResult result;
  result.set_result(handled.get() ? ipc::EResultOk : ipc::EResultIllegal);
  return result;
}

// Lasts as long as the bridge. Released when nothing is served any more and the machine has
// returned from Run: it stops the handler's worker and takes the bridge down, whose ends hold each
// other until then.
using CProcessControlBridge = std::shared_ptr<void>;

// Wires the bridge between the machine with its action handler and the process-control service:
// requests become events, entered states and alive reports go out. Once, before the machine runs
// and before the service is served.
template <typename Handler, typename Service>
[[nodiscard]] CProcessControlBridge ConnectIProcessControl(
    const std::shared_ptr<Handler>& handler, const std::shared_ptr<Service>& service,
    const std::shared_ptr<IHsmInterface>& machine) {
  const auto report = [service](ipc::EState number) {
    ipc::MState state;
    state.set_state(number);
    service->ReportState(state);
  };
  handler->SetMachine(machine.get());
  service->ConnectRequests(
      [machine] {
        LOG(Trace, "(../statemachines/utils/statemachinesutility:28) IEnableCall");
        return PostAndWait<ExtEnableReq>(*machine);
      },
      [machine] {
        LOG(Trace, "(../statemachines/utils/statemachinesutility:32) IDisableCall");
        return PostAndWait<ExtDisableReq>(*machine);
      });
  handler->ExtUninitializedRsp = [report] {
    LOG(Trace, "(../statemachines/utils/statemachinesutility:38) ExtUninitializedRsp");
    report(ipc::EStateUninitialized);
  };
  handler->ExtDisabledRsp = [report] {
    LOG(Trace, "(../statemachines/utils/statemachinesutility:42) ExtDisabledRsp");
    report(ipc::EStateDisabled);
  };
  handler->ExtEnabledRsp = [report] {
    LOG(Trace, "(../statemachines/utils/statemachinesutility:47) ExtEnabledRsp");
    report(ipc::EStateEnabled);
  };
  handler->ExtErrorRsp = [report] {
    LOG(Trace, "(../statemachines/utils/statemachinesutility:51) ExtErrorRsp");
    report(ipc::EStateError);
  };
  handler->ExtFatalErrorRsp = [report] {
    LOG(Trace, "(../statemachines/utils/statemachinesutility:55) ExtFatalErrorRsp");
    report(ipc::EStateFatalError);
  };
  handler->ExtSendAlive = [service] {
    LOG(Trace, "(../statemachines/utils/statemachinesutility:59) ExtSendAlive");
    service->SendAlive();
  };
  return {nullptr, [handler, service](void*) {
            // Before the callables go: an alive report may be on its way.
            handler->Stop();
            for (auto* callable :
                 {&handler->ExtUninitializedRsp, &handler->ExtDisabledRsp, &handler->ExtEnabledRsp,
                  &handler->ExtErrorRsp, &handler->ExtFatalErrorRsp, &handler->ExtSendAlive}) {
              *callable = nullptr;
            }
            handler->SetMachine(nullptr);
            service->ConnectRequests({}, {});
          }};
}
