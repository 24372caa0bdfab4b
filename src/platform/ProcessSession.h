// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace lexmira {

// What the process's surroundings offer before any application object exists.

// Whether a window could be shown at all: a display server is named, or a Qt platform was
// chosen explicitly. A launch without one can still hand its request to a running instance.
bool displayAvailable();

// Blanks the command line's arguments after the first in the process's own memory, so that the
// URL a launch was given (which can carry a sign-in code) is not readable from outside for the
// process's whole life. Call after everything that reads argv has copied what it needs.
void hideCommandLineArguments(int argc, char** argv);

} // namespace lexmira
