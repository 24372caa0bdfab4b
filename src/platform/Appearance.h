// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QObject>

#include <memory>

namespace lexmira {

// The desktop's light or dark appearance. Starts light, learns the desktop's setting
// asynchronously, and follows it from then on. Main thread only.
class Appearance : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    virtual bool isDark() const = 0;

    static std::unique_ptr<Appearance> create();

Q_SIGNALS:
    // The desktop announced a change of its colour scheme (including the first answer, when it
    // differs from the light default). Emitted on the main thread.
    void changed();
};

} // namespace lexmira
