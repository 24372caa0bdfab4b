// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/HttpClient.h"

#include <atomic>
#include <memory>

namespace lexmira {

// Hands every request to a real client and counts the completions that came back, after the
// caller's completion has run. Lets a test know that a request is over when its completion
// leaves no other trace.
class CountingHttpClient final : public HttpClient {
public:
    explicit CountingHttpClient(std::shared_ptr<HttpClient> client)
        : client_(std::move(client))
    {
    }

    void send(HttpRequest request, Completion completion) override
    {
        ++sent_;
        client_->send(std::move(request),
                      [this, completion = std::move(completion)](
                          std::optional<QByteArray> data, std::optional<HttpResponse> response,
                          std::optional<HttpError> error) {
                          completion(std::move(data), std::move(response), std::move(error));
                          ++completed_;
                      });
    }

    int sent() const { return sent_; }
    int completed() const { return completed_; }

private:
    std::atomic<int> sent_ = 0;
    std::atomic<int> completed_ = 0;
    // Last, so that it stops its worker thread before the counters go.
    std::shared_ptr<HttpClient> client_;
};

} // namespace lexmira
