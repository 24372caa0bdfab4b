// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "platform/PlatformLog.h"

namespace lexmira {

Q_LOGGING_CATEGORY(lcBus, "lexmira.bus", QtWarningMsg)
Q_LOGGING_CATEGORY(lcHttp, "lexmira.http", QtWarningMsg)
Q_LOGGING_CATEGORY(lcSuite, "lexmira.suite", QtWarningMsg)
Q_LOGGING_CATEGORY(lcActivation, "lexmira.activation", QtWarningMsg)

} // namespace lexmira
