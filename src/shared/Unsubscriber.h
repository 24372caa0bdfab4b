// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <functional>
#include <memory>
#include <mutex>

namespace lexmira {

// Ends a subscription: once, either through unsubscribe() or when the last reference goes. A
// subscriber keeps it for exactly as long as it wants notifications. Thread-safe.
class Unsubscriber {
public:
    explicit Unsubscriber(std::function<void()> unsubscribe);
    ~Unsubscriber();
    Unsubscriber(const Unsubscriber&) = delete;
    Unsubscriber& operator=(const Unsubscriber&) = delete;

    // Runs the ending action the first time; later calls do nothing.
    void unsubscribe();

private:
    std::mutex mutex_;
    std::function<void()> unsubscribe_;
};

} // namespace lexmira
