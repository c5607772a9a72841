#include "utils/connectortext.h"

#include <fmt/core.h>

std::string ConnectorStateToString(ipc::EConnectorState state) {
  return ipc::EConnectorState_Name(state);
}

std::string ConnectorStateToString(const ipc::MConnectorState& state) {
  return ConnectorStateToString(state.state());
}

std::string ConnectorSessionToString(const ipc::MConnectorSession& session) {
  return fmt::format("Session Id: {}, Authorized: {}", session.session_id(), session.authorized());
}

std::string ConnectorReservationToString(const ipc::MConnectorReservation& reservation) {
  return fmt::format("Reservation Id: {}, Expiration Date: {}, Id Token: {}",
                     reservation.reservation_id(), reservation.expiration_date(),
                     reservation.id_token());
}

std::string ConnectorInfoToString(const ipc::MConnectorInfo& info) {
  return fmt::format("State: {}, Session Info: ({}), Reservation Info: ({})",
                     ConnectorStateToString(info.state()), ConnectorSessionToString(info.session()),
                     ConnectorReservationToString(info.reservation()));
}
