// How long the serving end of a notification waits for its subscribers' replies.
#pragma once

#include <chrono>

namespace Rpc {

inline constexpr auto kReplyLimit = std::chrono::seconds(2);

}  // namespace Rpc
