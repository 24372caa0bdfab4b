// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/SystemLog.h"

#include <mutex>
#include <string>
#include <vector>

namespace lexmira {

// Keeps every line written, in order. Thread-safe.
class RecordingSystemLog final : public SystemLog {
public:
    void error(const std::string& line) override
    {
        const std::lock_guard lock(mutex_);
        lines_.push_back(line);
    }

    std::vector<std::string> lines() const
    {
        const std::lock_guard lock(mutex_);
        return lines_;
    }

private:
    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
};

} // namespace lexmira
