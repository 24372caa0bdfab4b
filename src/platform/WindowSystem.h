// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/LaunchActivation.h"

class QWidget;

namespace lexmira {

// Whether the program places its own windows. Where it does not (Wayland), the compositor places
// every new window and a move() does nothing.
bool windowSystemPlacesWindows();

// Brings window, which is shown, to the front and gives it the focus on behalf of launch, and
// ends the launcher's startup feedback for launch. Without a token the window system may keep
// the window from taking the focus from the user's current window. Main thread only.
void bringWindowToFront(QWidget* window, const LaunchActivation& launch);

// Ends the launcher's startup feedback for a launch that brings no window to the front. Main
// thread only.
void endLaunchFeedback(const LaunchActivation& launch);

} // namespace lexmira
