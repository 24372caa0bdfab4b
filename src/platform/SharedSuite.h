// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QString>

#include <chrono>
#include <memory>
#include <optional>

namespace lexmira {

// Told when a key of a shared suite changes.
class SharedSuiteObserver {
public:
    virtual ~SharedSuiteObserver() = default;

    // Runs on the suite's watcher thread (never the main thread), once per change of key.
    virtual void observeValue(const QString& key) = 0;
};

// A suite of byte values by key that several processes share (the application group shared with
// the extension), with per-key change notification. Reads see every completed write of any
// process and never a partial one. Thread-safe.
class SharedSuite {
public:
    // A stored value larger than this reads as none, and is not stored. Every value the system
    // keeps is far smaller.
    static constexpr qsizetype maxValueBytes = 1024 * 1024;
    // A writer's temporary file this old belongs to a writer that died before completing its
    // write; it is removed when the suite is opened or rescanned.
    static constexpr std::chrono::minutes staleTemporaryAge{10};

    virtual ~SharedSuite() = default;

    // The bytes stored under key; none when the key is missing or cannot be read.
    virtual std::optional<QByteArray> data(const QString& key) const = 0;
    // Stores bytes under key, replacing the old value as a whole; none removes the key. Returns
    // once the value is durable. Failures are dropped.
    virtual void setData(const std::optional<QByteArray>& bytes, const QString& key) = 0;

    // Calls observer->observeValue(key) once for every change of key made by any process, this
    // one included, until removeObserver. No call is made for the state at the time of adding.
    // The suite keeps observer alive while it is added. Adding the same observer for the same
    // key twice has it called twice.
    virtual void addObserver(std::shared_ptr<SharedSuiteObserver> observer, const QString& key) = 0;
    // Ends one addObserver of observer for key. When it returns, no call of observer for key
    // is running or will start, unless it is called from that observer's own callback.
    virtual void removeObserver(const SharedSuiteObserver* observer, const QString& key) = 0;

    // Opens (creating it if needed) the suite of the given name shared by every process of the
    // user; null when its storage cannot be created or watched.
    static std::unique_ptr<SharedSuite> open(const QString& suiteName);
    // Where open keeps the suite of that name, whether or not it exists yet; empty for a name
    // open refuses.
    static QString location(const QString& suiteName);
};

} // namespace lexmira
