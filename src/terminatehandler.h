// The last word of a process that an exception ends.
#pragma once

// For std::set_terminate: logs the exception's type and text, then aborts.
[[noreturn]] void HandleTerminate();
