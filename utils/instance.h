// Field-wise equality of the records that say who or what is meant.
#pragma once

#include "platform/ipc/common.pb.h"
#include "platform/ipc/sessionmanager.pb.h"

namespace ipc {

bool operator==(const MInstanceType& left, const MInstanceType& right);
bool operator==(const MAuthorizeRequest& left, const MAuthorizeRequest& right);

}  // namespace ipc
