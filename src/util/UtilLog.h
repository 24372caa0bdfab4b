// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QLoggingCategory>

namespace lexmira {

// Diagnostics of the shared helpers (what the alert queue had to drop). Warnings are on.
Q_DECLARE_LOGGING_CATEGORY(lcUtil)

} // namespace lexmira
