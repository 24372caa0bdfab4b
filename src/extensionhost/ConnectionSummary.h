// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

// One browser connection the broker has, as status lists it.
struct ConnectionSummary {
    QString browserName; // display name, e.g. "Chromium"; empty when the broker does not know it
    QString extensionId;
    qint64 connectedSinceMs = 0; // milliseconds since the epoch, UTC
};
