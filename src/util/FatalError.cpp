// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "util/FatalError.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace lexmira {

namespace {

// Source paths are reported relative to src/ ("Common/EnvCommon.cpp"), as the code names them.
std::string_view sourceRelativePath(std::string_view path)
{
    constexpr std::string_view marker = "src/";
    if (const auto at = path.rfind(marker); at != std::string_view::npos)
        return path.substr(at + marker.size());
    return path;
}

} // namespace

void fatalError(std::string_view message, std::source_location where)
{
    const auto file = sourceRelativePath(where.file_name());
    std::fprintf(stderr, "Fatal error: %.*s: file %.*s, line %u\n", int(message.size()),
                 message.data(), int(file.size()), file.data(), unsigned(where.line()));
    std::fflush(stderr);
    std::abort();
}

} // namespace lexmira
