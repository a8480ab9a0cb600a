#pragma once

#include <QString>

/// Stores `text` where the caller asked for it.
inline void setError(QString *error, const QString &text)
{
    if (error)
        *error = text;
}
