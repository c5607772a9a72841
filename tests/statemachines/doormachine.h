// A small machine with one of everything that a machine can have.
#pragma once

#include <functional>
#include <string>

#include "platform/log/log.h"
#include "statemachines/hsm.h"
#include "statemachines/hsmactionhandlerbase.h"

struct CDoorTag {};

template <>
struct HsmEventNames<CDoorTag> {
  static constexpr std::string_view kNames[] = {"Push",  "Opened", "Pull",   "Knock", "Shake",
                                                "Break", "Seal",   "Finish", "Halt"};
};

using Push = CHsmEvent<CDoorTag, 0>;
using Opened = CHsmEvent<CDoorTag, 1>;
using Pull = CHsmEvent<CDoorTag, 2>;
using Knock = CHsmEvent<CDoorTag, 3, int, std::string>;
using Shake = CHsmEvent<CDoorTag, 4>;
using Break = CHsmEvent<CDoorTag, 5>;
using Seal = CHsmEvent<CDoorTag, 6>;
using Finish = CHsmEvent<CDoorTag, 7>;
using Halt = CHsmEvent<CDoorTag, 8>;

enum EDoorLeaf : unsigned { Closed = 1, Opening, Open, Broken, Sealed, Ended };

// Actions are lines of the log, so that their place among the machine's own lines shows. A test may
// hang more on an action.
class CDoorHandler : public CHsmActionHandlerBase {
 public:
  void EnterClosed() { Act("enter closed"); }
  void LightOn() { Act("light on"); }
  void LightOff() { Act("light off"); }
  void Ring(int times, const std::string& who) { Act("ring " + std::to_string(times) + " " + who); }
  void Lock() { Act("lock"); }
  void Creak() { Act("creak"); }

  std::function<void(const std::string& action)> mHook = [](const std::string&) {};

 private:
  void Act(const std::string& action) {
    LOG(Trace, "{}", action);
    mHook(action);
  }
};

// clang-format off
template <>
struct HsmDefinition<CDoorHandler> : HsmTable<CDoorHandler> {
  using H = CDoorHandler;
  static constexpr std::string_view kName = "Door";
  static constexpr unsigned kInitial = Closed;

  static constexpr std::array kLeaves{
      Leaf{Closed,  "Closed",  Do<&H::EnterClosed>},
      Leaf{Opening, "Opening", Do<&H::Post<Opened>>},
      Leaf{Open,    "Open",    Do<&H::LightOn, &H::ExtEnabledRsp>, Do<&H::Creak, &H::LightOff>},
      Leaf{Broken,  "Broken",  Do<&H::ExtErrorRsp>},
      Leaf{Sealed,  "Sealed",  DoOrTerminate<&H::Lock>},
      Leaf{Ended,   "Ended",   Do<&IHsmInterface::Stop>},
  };

  static constexpr std::array kRows{
      //  level     event   target   action
      Row<Closed,   Push,   Opening>,
      Row<Closed,   Knock,  kStays,  &H::Ring>,
      Row<Closed,   Pull,   kStays>,
      Row<Opening,  Opened, Open>,
      Row<Open,     Pull,   Closed>,
      Row<Open,     Knock,  kStays,  &H::ExtEnabledRsp>,
      Row<Broken,   Shake,  kStays,  &H::Creak>,
      Row<kAnyLeaf, Shake,  kStays,  &H::Post<Break>>,
      Row<kAnyLeaf, Break,  Broken>,
      Row<kAnyLeaf, Seal,   Sealed>,
      Row<kAnyLeaf, Finish, Ended>,
      Row<kAnyLeaf, Halt,   kStays,  &IHsmInterface::Stop>,
  };
};
// clang-format on
