#pragma once

#include "ServiceTypes.h"

#include <functional>
#include <optional>

class Connection;

/// Reads one request. Nothing when the peer left or sent no HTTP (which then has been answered with 400).
/// `wantsBody` is asked once the headers are there; if it says no, the body is left unread and the request is
/// not complete.
std::optional<ServiceRequest> readRequest(Connection &connection,
                                          const std::function<bool(const ServiceRequest &)> &wantsBody);

/// The answer as it goes over the wire.
QByteArray rendered(const ServiceAnswer &answer);
