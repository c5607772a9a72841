// The life of the process as the board controller steers and sees it.
#pragma once

#include <array>
#include <string_view>

#include "statemachines/feedbackhsmactionhandlerbase.h"
#include "statemachines/hsm.h"

// clang-format off
template <>
struct HsmDefinition<CFeedbackHsmActionHandlerBase> : HsmTable<CFeedbackHsmActionHandlerBase> {
  using H = CFeedbackHsmActionHandlerBase;

  enum ELeaf : unsigned {
    Disabled = 1,       // initialised, indication off
    Disabling,          // passed through
    Enabled,            // monitoring, connectors shown, alive reports
    Enabling,           // passed through
    Error,              // passed through: an internal error is reported, then recovered from
    FatalError,         // only termination leaves it
    Initializing,       // passed through: the indication gets its settings
    Recovering,         // passed through
    Terminating,        // passed through
    Uninitialized,      // before the first disable request
    FinalStatemachine,  // Run returns
  };

  static constexpr std::string_view kName = "Statemachine";
  static constexpr unsigned kInitial = Uninitialized;

  // With the entry and the exit actions.
  static constexpr std::array kLeaves{
      Leaf{Disabled,          "Disabled",            Do<&H::ExtDisabledRsp>},
      Leaf{Disabling,         "Disabling",           Do<&H::Post<IntDisablingDone>>},
      Leaf{Enabled,           "Enabled",
           Do<&H::IntStartMonitoring, &H::IntEnableConnectors, &H::ExtEnabledRsp, &H::IntStartAliveTimer>,
           Do<&H::IntDisableConnectors, &H::IntStopMonitoring, &H::IntStopAliveTimer>},
      Leaf{Enabling,          "Enabling",            Do<&H::Post<IntEnablingDone>>},
      Leaf{Error,             "Error",               Do<&H::ExtErrorRsp, &H::Post<IntRecover>>},
      Leaf{FatalError,        "FatalError",          Do<&H::ExtFatalErrorRsp>},
      Leaf{Initializing,      "Initializing",        DoOrTerminate<&H::IntInitialize>},
      Leaf{Recovering,        "Recovering",          Do<&H::Post<IntRecoveringDone>>},
      Leaf{Terminating,       "Terminating",         Do<&H::Post<IntTerminatingDone>>},
      Leaf{Uninitialized,     "Uninitialized",       Do<&H::ExtUninitializedRsp>},
      Leaf{FinalStatemachine, "_Final_Statemachine", Do<&IHsmInterface::Stop>},
  };

  // What is missing is refused: an enable before the first disable, any request on the way between
  // two states, a feedback event or an error while not Enabled.
  static constexpr std::array kRows{
      //  level          event                      target,  action
      Row<Uninitialized, ExtDisableReq,             Initializing>,
      Row<Initializing,  IntInitializingDone,       Disabled>,
      Row<Disabled,      ExtEnableReq,              Enabling>,
      Row<Disabled,      ExtDisableReq,             kStays,  &H::ExtDisabledRsp>,
      Row<Enabling,      IntEnablingDone,           Enabled>,
      Row<Enabled,       ExtDisableReq,             Disabling>,
      Row<Enabled,       IntOnErrorChanged,         kStays,  &H::IntUpdateErrorState>,
      Row<Enabled,       ExtOnTriggerFeedbackEvent, kStays,  &H::IntTriggerFeedbackEvent>,
      Row<Enabled,       ExtEnableReq,              kStays,  &H::ExtEnabledRsp>,
      Row<Disabling,     IntDisablingDone,          Disabled>,
      Row<Error,         IntRecover,                Recovering>,
      Row<Recovering,    IntRecoveringDone,         Disabled>,
      Row<FatalError,    IntError,                  kStays,  &H::ExtFatalErrorRsp>,
      Row<FatalError,    ExtDisableReq,             kStays,  &H::ExtFatalErrorRsp>,
      Row<FatalError,    ExtEnableReq,              kStays,  &H::ExtFatalErrorRsp>,
      Row<Terminating,   IntTerminatingDone,        FinalStatemachine>,
      Row<kAnyLeaf,      IntError,                  Error>,
      Row<kAnyLeaf,      IntFatalError,             FatalError>,
      Row<kAnyLeaf,      IntTerminate,              Terminating>,
      Row<kAnyLeaf,      ExtError,                  kStays,  &H::Post<IntError>>,
  };
};
// clang-format on
