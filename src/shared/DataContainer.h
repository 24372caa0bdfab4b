// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "shared/Unsubscriber.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace lexmira {

// Raw bytes by key, with change observation: the storage behind the shared values.
class DataContainer {
public:
    virtual ~DataContainer() = default;

    // The stored bytes, or none when nothing is stored under key.
    virtual std::optional<QByteArray> get(const QString& key) const = 0;
    // Stores bytes under key; none removes the key.
    virtual void set(const std::optional<QByteArray>& bytes, const QString& key) = 0;
    // Calls callback once per change of key (by any process, this one included) until the
    // returned Unsubscriber ends it. No call at subscription time. The implementation states on
    // which thread callback runs.
    virtual std::shared_ptr<Unsubscriber> subscribe(const QString& key,
                                                    std::function<void()> callback) = 0;
};

} // namespace lexmira
