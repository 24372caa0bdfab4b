// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/UserDefaults.h"

#include <QHash>

#include <mutex>

namespace lexmira {

// The application's settings in memory. Thread-safe.
class MemoryUserDefaults final : public UserDefaults {
public:
    QVariant object(const QString& key) const override
    {
        const std::lock_guard lock(mutex_);
        return values_.value(key);
    }

    void setObject(const QVariant& value, const QString& key) override
    {
        const std::lock_guard lock(mutex_);
        if (value.isValid())
            values_.insert(key, value);
        else
            values_.remove(key);
    }

private:
    mutable std::mutex mutex_;
    QHash<QString, QVariant> values_;
};

} // namespace lexmira
