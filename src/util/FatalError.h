// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <source_location>
#include <string_view>

namespace lexmira {

// Stops the process for a programming or configuration error that leaves nothing sensible to
// do: missing identity, an unset environment service, an unsupported initialiser. Writes
// "Fatal error: <message>: file <path under src/>, line <n>" to stderr and aborts.
[[noreturn]] void fatalError(std::string_view message,
                             std::source_location where = std::source_location::current());

} // namespace lexmira
