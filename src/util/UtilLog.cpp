// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "util/UtilLog.h"

namespace lexmira {

Q_LOGGING_CATEGORY(lcUtil, "lexmira.util", QtWarningMsg)

} // namespace lexmira
