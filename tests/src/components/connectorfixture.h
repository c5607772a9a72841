// A connector on the real lamp, with the session manager and the clock in the test's hand.
#pragma once

#include <array>
#include <chrono>
#include <memory>

#include "src/components/connector.h"
#include "tests/src/components/lampfixture.h"
#include "tests/support/fakesessionmanager.h"
#include "tests/support/manualclock.h"

// The lamp of an enabled connector by the number of its state; empty: as it was.
inline constexpr auto kStateLamps = std::to_array<const char*>(
    {"Yellow/On", "Green/On", "Yellow/On", "Yellow/On", "Green/On", "Blue/On", "Blue/Pulsating",
     "Blue/On", "Blue/On", "Blue/On", "", "Blue/On", "Blue/Pulsating"});
inline constexpr int kAvailable = 1;
inline constexpr int kAuthorized = 5;
inline constexpr int kCharging = 6;
inline constexpr int kChanging = 10;

class CConnectorFixture : public CLampFixture {
 protected:
  CConnectorFixture() {
    // So dark that each floor shows in the limits.
    mControl->SetBrightness(5);
    mWorker->Start();
  }
  ~CConnectorFixture() override { mWorker->Stop(); }

  void Advance(std::chrono::milliseconds time) {
    mWorker->Sync();
    mClock->Advance(time);
    mWorker->Sync();
  }

  const std::shared_ptr<ManualClock> mClock = std::make_shared<ManualClock>();
  const std::shared_ptr<CWorker> mWorker = std::make_shared<CWorker>("test", mClock);
  const std::shared_ptr<CFakeSessionManager> mSessions = std::make_shared<CFakeSessionManager>();
  const std::shared_ptr<CLedControl> mControl = CreateLedControl();
  std::unique_ptr<CConnector> mConnector = std::make_unique<CConnector>(
      std::make_shared<CConnectorPrefix>(1), mControl, mSessions, mWorker);
};
