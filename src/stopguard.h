// The end of the process where the orderly end does not come in time: a device that does not answer
// holds its thread for as long as its driver likes, and everything that waits for the thread too.
#pragma once

#include <functional>

// Threads: any.
namespace StopGuard {

// What is tried first when the guard strikes, for a moment and on a thread of its own; it must not
// be over when the process ends. Empty: nothing. Does not return any more once the guard has
// struck, so that what the function uses stays.
void SetFarewell(std::function<void()> farewell);

// From the first call on the process has 700 ms. Then the farewell is said, the tone is switched
// off, and the process ends with status 0, whatever still hangs in it.
void Start();

}  // namespace StopGuard
