#pragma once

#include <QtGlobal>

/// Has QML collect garbage in one go, as it does before Qt 6.8. Done in pieces, it now and then crashes over
/// a URL while a file dialog is open (seen in 6.11: 2 of 16 runs of the dialog's tests, none of 36 this way).
/// To be called before the first engine is made. A value that the user has set stays.
inline void collectGarbageInOneGo()
{
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
    if (!qEnvironmentVariableIsSet("QV4_GC_TIMELIMIT"))
        qputenv("QV4_GC_TIMELIMIT", "0");
#endif
}
