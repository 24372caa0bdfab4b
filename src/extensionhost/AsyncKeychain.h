// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/KeychainItems.h"
#include "shared/Keychain.h"

#include <QByteArray>
#include <QObject>
#include <QThread>

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace lexmira {

// The product's keychain (the items the companion and the extension share), asked off the
// caller's thread: the Secret Service answers synchronously and may take its time, and the
// caller's event loop must not wait for it. One worker thread runs the calls in the order they
// were made, so a get after a set sees what was set.
class AsyncKeychain {
public:
    struct Result {
        KeychainItems::Status status = KeychainItems::success;
        // The item's data or persistent reference, for a get that succeeded.
        std::optional<QByteArray> data;
    };
    using Completion = std::function<void(Result result)>;

    explicit AsyncKeychain(std::shared_ptr<KeychainItems> items);
    // Waits for the call that is running; calls still queued are dropped unanswered.
    ~AsyncKeychain();
    AsyncKeychain(const AsyncKeychain&) = delete;
    AsyncKeychain& operator=(const AsyncKeychain&) = delete;

    // Each completion runs on the thread that built this object (context's thread), and not at
    // all once context is gone.
    void get(const std::string& account, bool asPersistentReference, QObject* context,
             Completion completion);
    void set(const std::string& account, const std::optional<QByteArray>& data, QObject* context,
             Completion completion);
    void remove(const std::string& account, QObject* context, Completion completion);

private:
    void run(QObject* context, Completion completion, std::function<Result()> call);

    const Keychain keychain_;
    // Lives on the constructing thread, where every completion is delivered.
    QObject receiver_;
    QThread thread_;
    // Lives on thread_; the calls are queued to it.
    QObject* worker_;
};

} // namespace lexmira
