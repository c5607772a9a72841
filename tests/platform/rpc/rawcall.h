// A call with bytes of the test's own making instead of a message.
#pragma once

#include <string>

// True when the service answered it.
bool CallWithBytes(const std::string& socketPath, const std::string& method,
                   const std::string& bytes);
