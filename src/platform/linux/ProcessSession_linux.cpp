// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "platform/ProcessSession.h"

#include <QtGlobal>

#include <cstring>

namespace lexmira {

bool displayAvailable()
{
    return !qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") ||
           !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") ||
           !qEnvironmentVariableIsEmpty("DISPLAY");
}

void hideCommandLineArguments(int argc, char** argv)
{
    // /proc/<pid>/cmdline reads the argument area of the process's memory as it is now; the
    // strings are overwritten in place, keeping their terminators so the area stays well formed.
    for (int i = 1; i < argc; ++i)
        if (argv[i])
            std::memset(argv[i], 0, std::strlen(argv[i]));
}

} // namespace lexmira
