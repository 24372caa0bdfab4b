// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <memory>
#include <string>

namespace lexmira {

// The system's log, for the application's own troubles.
class SystemLog {
public:
    virtual ~SystemLog() = default;

    // Writes one line at error priority. Thread-safe; never blocks for long and never fails
    // towards the caller (a log that cannot be reached loses the line).
    virtual void error(const std::string& line) = 0;

    static std::unique_ptr<SystemLog> create();
};

} // namespace lexmira
