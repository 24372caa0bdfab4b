// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "app/AppLog.h"

namespace lexmira {

Q_LOGGING_CATEGORY(lcApp, "lexmira.app", QtWarningMsg)

} // namespace lexmira
