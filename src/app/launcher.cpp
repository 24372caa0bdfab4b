// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

// lexmira-companion, the program the command line and the desktop entry start. A launch that
// finds the companion running hands its request (a sign-in URL, or just "show the window") over
// with one bus call and ends, without loading the application: Qt, its plugins and the rest are
// most of what a launch costs. Every other launch becomes the application, which this program
// puts in its own place (exec), so whoever started it keeps the same process.

#include "platform/linux/ApplicationBus.h"

#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

std::string environment(const char* name)
{
    const char* value = std::getenv(name);
    return value ? value : "";
}

// The application lies at the same place relative to this program in the build tree and where
// it is installed.
std::string applicationPath()
{
    char self[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", self, sizeof self);
    if (length <= 0 || static_cast<std::size_t>(length) >= sizeof self)
        return LEXMIRA_APPLICATION_INSTALLED;
    std::string path(self, static_cast<std::size_t>(length));
    path.erase(path.rfind('/') + 1);
    return path + LEXMIRA_APPLICATION_FROM_LAUNCHER;
}

} // namespace

int main(int argc, char** argv)
{
    // A launch with nothing or with one URL is what a later launch hands over; options (--help,
    // --doctor, the platform's own) are the application's to read.
    if (argc == 1 || (argc == 2 && argv[1][0] != '-')) {
        const lexmira::ApplicationBus::LaunchTokens launch{environment("XDG_ACTIVATION_TOKEN"),
                                                           environment("DESKTOP_STARTUP_ID")};
        if (const auto handedOver =
                lexmira::ApplicationBus::handOverIfRunning(argc == 2 ? argv[1] : nullptr, launch))
            return *handedOver ? 0 : 1;
    }
    const std::string application = applicationPath();
    execv(application.c_str(), argv);
    std::fprintf(stderr, "lexmira-companion: cannot start %s: %s\n", application.c_str(),
                 std::strerror(errno));
    return 127;
}
