// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "shared/DataContainer.h"

#include <QHash>

#include <map>
#include <mutex>

namespace lexmira {

// Keeps bytes in memory and notifies subscribers synchronously, on the writing thread, once per
// set. Stands in for the shared suite where a test is about logic, not storage.
class MemoryDataContainer final : public DataContainer {
public:
    std::optional<QByteArray> get(const QString& key) const override
    {
        const std::lock_guard lock(mutex_);
        const auto found = values_.find(key);
        if (found == values_.end())
            return std::nullopt;
        return found.value();
    }

    void set(const std::optional<QByteArray>& bytes, const QString& key) override
    {
        std::vector<std::function<void()>> toCall;
        {
            const std::lock_guard lock(mutex_);
            if (bytes)
                values_.insert(key, *bytes);
            else
                values_.remove(key);
            for (const auto& [id, entry] : subscribers_)
                if (entry.first == key)
                    toCall.push_back(entry.second);
        }
        for (const auto& callback : toCall)
            callback();
    }

    std::shared_ptr<Unsubscriber> subscribe(const QString& key,
                                            std::function<void()> callback) override
    {
        const std::lock_guard lock(mutex_);
        const int id = nextId_++;
        subscribers_.emplace(id, std::make_pair(key, std::move(callback)));
        return std::make_shared<Unsubscriber>([this, id] {
            const std::lock_guard lock(mutex_);
            subscribers_.erase(id);
        });
    }

    // Writes bytes as the extension would, bypassing any encoding.
    void setRaw(const QString& key, const QByteArray& bytes) { set(bytes, key); }

    std::size_t subscriberCount() const
    {
        const std::lock_guard lock(mutex_);
        return subscribers_.size();
    }

private:
    mutable std::mutex mutex_;
    QHash<QString, QByteArray> values_;
    std::map<int, std::pair<QString, std::function<void()>>> subscribers_;
    int nextId_ = 0;
};

} // namespace lexmira
