// Whether somebody serves a socket, and is awake; and who it is.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/rpc/peercheck.h"

// The end of what happened where the service does not take this user.
inline constexpr std::string_view kRefusesUser = "this user may not use it";
// And where its process does nothing.
inline constexpr std::string_view kHangs = "does not answer";

// Greets as an HTTP/2 client does, which every gRPC server answers before any call. Empty when it
// answers within a second, else what happened, with the path.
std::string WhyNoAnswer(const std::string& socketPath);

// The process that serves it; empty where nobody does, or the kernel does not say.
std::optional<Rpc::Peer> ServedBy(const std::string& socketPath);
