#pragma once

#include <QString>

/// Finds the files that are delivered beside the program: the external helper programs and the user manual.
class ToolLauncher
{
public:
    ToolLauncher() = delete;

    /// The folder of the helper programs: that of the source checkout in a developer's build, else "tools"
    /// beside the program, whether it exists or not.
    static QString toolsRoot();

    /// Absolute path of the user manual, or an empty string.
    static QString findHelpPdf();
};
