// The service through which other processes change this process's logging at run time.
#pragma once

#include <memory>

class ILogConfig;

namespace Log {

std::shared_ptr<ILogConfig> CreateLogConfigService();

}  // namespace Log
