#include "src/terminatehandler.h"

#include <cstdlib>
#include <exception>
#include <typeinfo>

#include "platform/log/log.h"

void HandleTerminate() {
  if (const std::exception_ptr current = std::current_exception()) {
    try {
      std::rethrow_exception(current);
    } catch (const std::exception& exception) {
      // A leading '*' marks a type whose name is compared by address.
      const char* name = typeid(exception).name();
      LOG(Critical, "Uncaught exception of type '{}' with message: '{}'",
          Log::Demangle(*name == '*' ? name + 1 : name), exception.what());
    } catch (...) {
      LOG(Critical, "Uncaught exception of unknown type.");
    }
  }
  LOG(Critical, "Aborting process.");
  std::abort();
}
