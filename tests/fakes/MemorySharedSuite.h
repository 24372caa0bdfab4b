// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/SharedSuite.h"

#include <QHash>

#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace lexmira {

// A shared suite in memory. Every write notifies the observers of its key synchronously, on the
// writing thread, as the watcher thread of the real suite would.
class MemorySharedSuite final : public SharedSuite {
public:
    std::optional<QByteArray> data(const QString& key) const override
    {
        std::lock_guard lock(mutex_);
        const auto found = values_.find(key);
        if (found == values_.end())
            return std::nullopt;
        return *found;
    }

    void setData(const std::optional<QByteArray>& bytes, const QString& key) override
    {
        std::vector<std::shared_ptr<SharedSuiteObserver>> observers;
        {
            std::lock_guard lock(mutex_);
            if (bytes)
                values_.insert(key, *bytes);
            else
                values_.remove(key);
            for (const auto& [observer, observedKey] : observers_)
                if (observedKey == key)
                    observers.push_back(observer);
        }
        for (const auto& observer : observers)
            observer->observeValue(key);
    }

    void addObserver(std::shared_ptr<SharedSuiteObserver> observer, const QString& key) override
    {
        std::lock_guard lock(mutex_);
        observers_.emplace_back(std::move(observer), key);
    }

    void removeObserver(const SharedSuiteObserver* observer, const QString& key) override
    {
        std::lock_guard lock(mutex_);
        for (auto it = observers_.begin(); it != observers_.end(); ++it)
            if (it->first.get() == observer && it->second == key) {
                observers_.erase(it);
                return;
            }
    }

    std::size_t observerCount() const
    {
        std::lock_guard lock(mutex_);
        return observers_.size();
    }

private:
    mutable std::mutex mutex_;
    QHash<QString, QByteArray> values_;
    std::vector<std::pair<std::shared_ptr<SharedSuiteObserver>, QString>> observers_;
};

} // namespace lexmira
