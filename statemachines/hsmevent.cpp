#include "statemachines/hsmevent.h"

std::future<bool> IHsmEvent::GetHandled() {
  auto future = mHandled.get_future();
  mAwaited = true;
  if (mVerdict != EVerdict::ENone) {
    Fulfil();
  }
  return future;
}

void IHsmEvent::Fulfil() {
  mHandled.set_value(mVerdict == EVerdict::EHandled);
}
