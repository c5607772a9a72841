// What the lamp of one connector is told.
#pragma once

#include <chrono>
#include <cstdint>

// What is shown for a moment to the person at the connector.
enum class EConnectorEvent : int32_t { EAuthSuccess = 0, EAuthFailure = 1, EIdentify = 2 };

// Threads: every operation from any thread. None throws or waits for more than the lamp and its
// report (see CConnector).
class IConnector {
 public:
  virtual ~IConnector() = default;

  // Enabled shows errors, else the connector's state. Disable shows the disabled lamp at once,
  // whatever event or error there is.
  virtual void Enable() = 0;
  virtual void Disable() = 0;

  // Shows the event before everything else until the time is over or the next event replaces it.
  virtual void ShowEvent(EConnectorEvent event, std::chrono::milliseconds displayTime) = 0;

  // Of several errors the oldest is shown. Adding one twice keeps its place; removing one that is
  // not there does nothing.
  virtual void AddError(int32_t identifier) = 0;
  virtual void RemoveError(int32_t identifier) = 0;
};
