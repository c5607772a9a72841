#include "utils/instance.h"

bool ipc::operator==(const MInstanceType& left, const MInstanceType& right) {
  return left.instance() == right.instance();
}

bool ipc::operator==(const MAuthorizeRequest& left, const MAuthorizeRequest& right) {
  return left.instance() == right.instance() && left.id_token() == right.id_token();
}
