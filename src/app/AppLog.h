// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QLoggingCategory>

namespace lexmira {

// The application's own diagnostics: the process, its window and the URLs it is handed.
// Warnings are on; what the window system shows and when is off unless QT_LOGGING_RULES turns on
// "lexmira.app.info".
Q_DECLARE_LOGGING_CATEGORY(lcApp)

} // namespace lexmira
