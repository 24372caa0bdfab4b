// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QLoggingCategory>

namespace lexmira {

// The extension host runs as two kinds of process, each with its own category. Warnings are on;
// info is off unless QT_LOGGING_RULES turns it on.

// The broker: its bus name, what the extension is asked and who connects
// ("lexmira.broker.info").
Q_DECLARE_LOGGING_CATEGORY(lcBroker)
// One browser's native-messaging host: why its connection ended.
Q_DECLARE_LOGGING_CATEGORY(lcHost)

} // namespace lexmira
