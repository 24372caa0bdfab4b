// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/HttpClient.h"

#include <QThread>

#include <mutex>
#include <vector>

namespace lexmira {

// Keeps every request, with the thread that sent it, and never answers: for tests about what
// was sent. Thread-safe.
class RecordingHttpClient final : public HttpClient {
public:
    struct Sent {
        HttpRequest request;
        QThread* thread;
    };

    void send(HttpRequest request, Completion completion) override
    {
        Q_UNUSED(completion);
        const std::lock_guard lock(mutex_);
        sent_.push_back({std::move(request), QThread::currentThread()});
    }

    std::vector<Sent> sent() const
    {
        const std::lock_guard lock(mutex_);
        return sent_;
    }

    std::size_t count() const
    {
        const std::lock_guard lock(mutex_);
        return sent_.size();
    }

private:
    mutable std::mutex mutex_;
    std::vector<Sent> sent_;
};

} // namespace lexmira
