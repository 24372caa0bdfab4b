// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>
#include <QStringList>

namespace lexmira {

// A modal alert: a message, an explanation, a style and its buttons.
struct Alert {
    enum class Style { warning, informational, critical };

    QString messageText;
    QString informativeText;
    Style style = Style::warning;
    QStringList buttons;

    bool operator==(const Alert&) const = default;
};

// Shows alerts. Only the user interface implements it; logic asks through it.
class AlertPresenter {
public:
    virtual ~AlertPresenter() = default;

    // Main thread only. Returns when the user has dismissed the alert, with the index of the
    // button chosen (-1 when it was closed without one, or when the alert was not shown now:
    // see AlertQueue).
    virtual int runModal(const Alert& alert) = 0;
};

} // namespace lexmira
