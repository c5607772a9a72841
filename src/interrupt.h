// SIGINT: taken by one thread that does nothing else.
//
// The handler therefore never interrupts a thread that holds a lock or is inside the allocator, and
// what it calls may take locks and allocate. Until a hook is set, and after it was removed, the
// signal has its default action.
#pragma once

#include <functional>

namespace Interrupt {

// Blocks SIGINT in this thread, and so in all that it starts later, and starts the thread that
// takes it. Called once, before any other thread is started.
void StartThread();

// Installs the handler: from now on each SIGINT calls the hook with the signal's number.
void SetHook(std::function<void(int)> hook);

// Restores the default action. The hook is not under way and is not called any more when this
// returns.
void RemoveHook();

}  // namespace Interrupt
