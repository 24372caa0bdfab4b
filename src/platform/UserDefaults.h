// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>
#include <QVariant>

#include <memory>

namespace lexmira {

// The application's own (not shared) settings. Values keep their type: a date stored as a
// QDateTime reads back as a QDateTime. Thread-safe.
class UserDefaults {
public:
    virtual ~UserDefaults() = default;

    // An invalid QVariant when nothing is stored under key.
    virtual QVariant object(const QString& key) const = 0;
    virtual void setObject(const QVariant& value, const QString& key) = 0;
    void setBool(bool value, const QString& key) { setObject(QVariant(value), key); }

    // The settings of the application with the given bundle identifier.
    static std::unique_ptr<UserDefaults> standard(const QString& bundleIdentifier);
};

} // namespace lexmira
