// One of the charger's other processes, as the program that plays it holds it.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/rpc/appcommunicationhost.h"

// Takes what a peer has to tell, one line without its end. Called from any thread.
using PeerEvents = std::function<void(const std::string&)>;

class IPeer {
 public:
  virtual ~IPeer() = default;

  // Adds the peer's service to the host, or opens its clients; called once, before the host starts
  // its services.
  virtual void Join(AppCommunicationHost<GrpcBackend>& host) = 0;

  // Does what a command's words say and returns what came of it: one of the outcomes below, some
  // with a text behind them. Returns when all who were told or asked have replied.
  virtual std::string Execute(const std::vector<std::string>& words) = 0;
};

inline constexpr std::string_view kOutcomeOk = "ok";
inline constexpr std::string_view kOutcomeNobody = "nobody";  // is subscribed
inline constexpr std::string_view kOutcomeLate = "late";      // a subscriber did not reply in time
inline constexpr std::string_view kOutcomeRefused = "refused";          // with the reason
inline constexpr std::string_view kOutcomeUnreachable = "unreachable";  // with the reason
inline constexpr std::string_view kOutcomeUnknown = "unknown";          // command

// By its name: "session-manager", "diagnostics", "board-controller" or "meter"; null for another
// one. The connector state is what the session manager begins with.
std::unique_ptr<IPeer> MakePeer(std::string_view name, int connectorState, PeerEvents events);
