// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace lexmira::startupTrace {

// Marks on the way from exec to the window, for the benchmark to show where start-up time goes.
// With LEXMIRA_STARTUP_TRACE naming a file, each mark appends "<name> <ns>\n" to it, the time
// being CLOCK_MONOTONIC's; without it, a mark costs one check of a flag.
inline constexpr const char* fileVariable = "LEXMIRA_STARTUP_TRACE";

void mark(const char* name);

} // namespace lexmira::startupTrace
