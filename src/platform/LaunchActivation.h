// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

namespace lexmira {

// What a launcher hands a launch so that the window the launch leads to may take the focus, and
// so that the launcher's busy feedback for it ends: the XDG activation token (Wayland) and the
// startup-notification id (X11). Either, or both, may be empty.
struct LaunchActivation {
    // Longer tokens are not taken from another process. Launchers' tokens are well under a
    // hundred bytes.
    static constexpr qsizetype maxTokenBytes = 512;

    QString activationToken;
    QString startupId;

    // The tokens the launcher gave this process. Read before the application object exists:
    // the X11 platform plugin takes the startup id out of the environment when it connects.
    static LaunchActivation ofThisProcess();

    bool isEmpty() const { return activationToken.isEmpty() && startupId.isEmpty(); }
    bool operator==(const LaunchActivation&) const = default;
};

} // namespace lexmira
