// How the charging connector reads: its state, its session and its reservation.
#pragma once

#include <string>

#include "platform/ipc/sessionmanager.pb.h"

// The enumerator's own name; empty for another value.
std::string ConnectorStateToString(ipc::EConnectorState state);
std::string ConnectorStateToString(const ipc::MConnectorState& state);

std::string ConnectorSessionToString(const ipc::MConnectorSession& session);
std::string ConnectorReservationToString(const ipc::MConnectorReservation& reservation);
std::string ConnectorInfoToString(const ipc::MConnectorInfo& info);
