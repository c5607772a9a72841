#include "statemachines/hsmactionhandlerbase.h"

#include <stdexcept>

IHsmInterface& CHsmActionHandlerBase::Machine() const {
  if (mMachine == nullptr) {
    throw std::logic_error("CHsmActionHandlerBase: IHsmInterface not set");
  }
  return *mMachine;
}
