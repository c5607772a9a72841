// Whether somebody serves a socket, and is awake.
#pragma once

#include <string>

// Greets as an HTTP/2 client does, which every gRPC server answers before any call. Empty when it
// answers within a second, else what happened, with the path.
std::string WhyNoAnswer(const std::string& socketPath);
