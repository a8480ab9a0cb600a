#pragma once

#include "ServiceTypes.h"

#include <QLatin1StringView>
#include <QStringList>

#include <span>

struct FaultInput
{
    /// The endpoint's own answer, for a fault that bends it.
    ServiceAnswer ordinary;
    /// The request's own URL, and the same one without TLS.
    QByteArray url;
    QByteArray plainUrl;
    /// What stands after the fault's name: "status:404:json" has two.
    QStringList arguments;
};

/// What a client is answered in place of the ordinary answer.
struct FaultKind
{
    QLatin1StringView name;
    /// The endpoint does its work, and its answer is bent; otherwise it never sees the request.
    bool bends;
    ServiceAnswer (*answer)(const FaultInput &input);
};

std::span<const FaultKind> faultKinds();
/// Null for an unknown fault; `fault` may carry arguments after colons.
const FaultKind *findFault(const QString &fault);
