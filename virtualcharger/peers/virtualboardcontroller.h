// The charger's board controller: enables and disables the daemon, watches it, and has it show what
// happens at the card reader. It sets what the daemon logs, too.
#pragma once

#include <atomic>
#include <memory>
#include <string>

#include "platform/rpc/interfaces/feedback.h"
#include "platform/rpc/interfaces/genericcontrol.h"
#include "platform/rpc/interfaces/logconfig.h"
#include "virtualcharger/peers/peer.h"
#include "virtualcharger/peers/wirelog.h"

// Events: "state NUMBER" for each state that the daemon reports, "alive COUNT" for each time that
// it says that it is alive.
//
// Threads: any.
class CVirtualBoardController {
 public:
  // Watches the daemon from now on, also one that comes later.
  CVirtualBoardController(std::shared_ptr<IGenericControl> control,
                          std::shared_ptr<IFeedback> feedback, std::shared_ptr<ILogConfig> log,
                          PeerEvents events);
  CVirtualBoardController(const CVirtualBoardController&) = delete;
  CVirtualBoardController& operator=(const CVirtualBoardController&) = delete;

  // All return the outcome: the daemon's verdict, or that it could not be asked.
  std::string Enable();
  std::string Disable();
  // Any number is an event.
  std::string Trigger(int event);
  // As of the log levels on the wire.
  std::string SetLogLevel(int level);

 private:
  const PeerEvents mEvents;
  const CWireLog mWire;
  std::atomic<unsigned> mAlive = 0;
  const std::shared_ptr<IGenericControl> mControl;
  const std::shared_ptr<IFeedback> mFeedback;
  const std::shared_ptr<ILogConfig> mLog;
};
