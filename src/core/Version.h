#pragma once

#include <QString>

/// The version shown in the header, sent with worker requests and tickets, and compared in the update check.
inline QString applicationVersion()
{
    return QStringLiteral("4.0.2");
}
