// The charger's energy meter, reduced to the brightness of its display.
#pragma once

#include <atomic>

#include "platform/rpc/interfaces/meter.h"
#include "virtualcharger/peers/peer.h"
#include "virtualcharger/peers/wirelog.h"

// Events: "display PERCENT" for each brightness that it takes, "accepts 1" or "accepts 0".
//
// Threads: any.
class CVirtualMeter : public IMeter {
 public:
  explicit CVirtualMeter(PeerEvents events);

  // Not Ok while it refuses.
  ipc::MResult SetDisplayBrightness(const ipc::MDisplayBrightness& brightness) override;

  void Refuse(bool refuse);

 private:
  const PeerEvents mEvents;
  const CWireLog mWire;
  std::atomic<bool> mRefuses = false;
};
