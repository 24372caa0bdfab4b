// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "shared/DataContainer.h"

namespace lexmira {

// Stands in when the shared suite cannot be opened: nothing is stored, every read is none, and
// subscriptions are never called.
class NoopDataContainer final : public DataContainer {
public:
    std::optional<QByteArray> get(const QString& key) const override;
    void set(const std::optional<QByteArray>& bytes, const QString& key) override;
    std::shared_ptr<Unsubscriber> subscribe(const QString& key,
                                            std::function<void()> callback) override;
};

} // namespace lexmira
