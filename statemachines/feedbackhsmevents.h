// The events of the lifecycle: Ext... come from outside, Int... from the process itself.
#pragma once

#include <string_view>

#include "platform/ipc/common.pb.h"
#include "platform/ipc/diagnostics.pb.h"
#include "platform/ipc/feedback.pb.h"
#include "statemachines/hsmevent.h"

struct CFeedbackHsmTag {};

// clang-format off

template <>
struct HsmEventNames<CFeedbackHsmTag> {
  static constexpr std::string_view kNames[] = {
      "ExtDisableReq",              //  0
      "ExtEnableReq",               //  1
      "ExtError",                   //  2
      "ExtOnTriggerFeedbackEvent",  //  3
      "IntDisablingDone",           //  4
      "IntEnablingDone",            //  5
      "IntError",                   //  6
      "IntFatalError",              //  7
      "IntInitializingDone",        //  8
      "IntOnErrorChanged",          //  9
      "IntRecover",                 // 10
      "IntRecoveringDone",          // 11
      "IntTerminate",               // 12
      "IntTerminatingDone",         // 13
  };
};

template <unsigned N, typename... Payload>
using FeedbackHsmEvent = CHsmEvent<CFeedbackHsmTag, N, Payload...>;

using ExtDisableReq             = FeedbackHsmEvent<0>;
using ExtEnableReq              = FeedbackHsmEvent<1>;
using ExtError                  = FeedbackHsmEvent<2>;
using ExtOnTriggerFeedbackEvent = FeedbackHsmEvent<3, ipc::MFbEventType, ipc::MInstanceType>;
using IntDisablingDone          = FeedbackHsmEvent<4>;
using IntEnablingDone           = FeedbackHsmEvent<5>;
using IntError                  = FeedbackHsmEvent<6>;
using IntFatalError             = FeedbackHsmEvent<7>;
using IntInitializingDone       = FeedbackHsmEvent<8>;
using IntOnErrorChanged         = FeedbackHsmEvent<9, ipc::MDiagnosticsSignal>;
using IntRecover                = FeedbackHsmEvent<10>;
using IntRecoveringDone         = FeedbackHsmEvent<11>;
using IntTerminate              = FeedbackHsmEvent<12>;
using IntTerminatingDone        = FeedbackHsmEvent<13>;

// clang-format on
