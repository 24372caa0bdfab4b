// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QLoggingCategory>

namespace lexmira {

// One category for each of the system's facilities that has something to say locally. Warnings
// and worse are on; info is off unless QT_LOGGING_RULES turns it on (for example
// "lexmira.activation.info=true").

// The session bus: the single instance's name and the hand-over to the running instance.
Q_DECLARE_LOGGING_CATEGORY(lcBus)
// HTTPS: the trust the client adds to the system's.
Q_DECLARE_LOGGING_CATEGORY(lcHttp)
// The settings suite shared with the extension: its directory, its watch, values not stored.
Q_DECLARE_LOGGING_CATEGORY(lcSuite)
// Which launch brought a window to the front, with which token (info).
Q_DECLARE_LOGGING_CATEGORY(lcActivation)

} // namespace lexmira
