// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "app/StartupTrace.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace lexmira::startupTrace {

void mark(const char* name)
{
    // Read once: the variable is the benchmark's, set before the process starts.
    static const char* const path = std::getenv(fileVariable);
    if (!path || !*path)
        return;
    const auto ns = std::chrono::duration_cast<std::chrono::nanoseconds>(
                        std::chrono::steady_clock::now().time_since_epoch())
                        .count();
    if (std::FILE* file = std::fopen(path, "ae")) {
        std::fprintf(file, "%s %lld\n", name, static_cast<long long>(ns));
        std::fclose(file);
    }
}

} // namespace lexmira::startupTrace
