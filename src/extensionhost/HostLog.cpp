// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "extensionhost/HostLog.h"

namespace lexmira {

Q_LOGGING_CATEGORY(lcBroker, "lexmira.broker", QtWarningMsg)
Q_LOGGING_CATEGORY(lcHost, "lexmira.host", QtWarningMsg)

} // namespace lexmira
