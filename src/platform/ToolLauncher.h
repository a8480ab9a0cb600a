#pragma once

#include <QString>

/// Finds and starts what is installed with the program: the external helper programs and the user manual. A
/// helper is started detached, without arguments, in its own folder; it outlives the editor and is not
/// monitored. An `error` pointer may be null. It is written on failure only. When the system refuses to start
/// a program, only launchVbfPhfBin() writes it.
class ToolLauncher
{
public:
    ToolLauncher() = delete;

    /// The folder of the helper programs: that of the source checkout in a developer's build, otherwise
    /// "tools" beside the program, existing or not.
    static QString toolsRoot();

    static bool launchJ1939(QString *error = nullptr);
    static bool launchVbfPhfBin(QString *error = nullptr);
    static bool launchChecksum(QString *error = nullptr);
    static bool launchDelcoChecksum(QString *error = nullptr);
    static bool launchEfdReader(QString *error = nullptr);

    /// Absolute path of the user manual, or an empty string.
    static QString findHelpPdf();
    /// Opens the manual with the desktop's default program for it.
    static bool launchHelpPdf(QString *error = nullptr);
};
