#pragma once

#include <QtGlobal>

/// Disables incremental garbage collection, new in Qt 6.8: it sometimes crashes over a URL while one of
/// Qt's file dialogs is open (seen in 6.11: 2 of 16 runs of tests of one; without it, none of 36). Call
/// before the first engine is created. A value set by the user is kept.
inline void collectGarbageInOneGo()
{
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
    if (!qEnvironmentVariableIsSet("QV4_GC_TIMELIMIT"))
        qputenv("QV4_GC_TIMELIMIT", "0");
#endif
}
