// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "Common/EnvType.h"

namespace lexmira {

std::string_view rawValue(EnvType type)
{
    switch (type) {
    case EnvType::dev:
        return "dev";
    case EnvType::prod:
        return "prod";
    }
    return {};
}

std::optional<EnvType> envTypeFromRawValue(std::string_view raw)
{
    for (const auto type : {EnvType::dev, EnvType::prod})
        if (rawValue(type) == raw)
            return type;
    return std::nullopt;
}

bool forcesTestEvents(EnvType type)
{
    return rawValue(type) != rawValue(EnvType::prod);
}

} // namespace lexmira
