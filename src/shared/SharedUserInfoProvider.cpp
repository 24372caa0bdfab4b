// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "shared/SharedUserInfoProvider.h"

#include "shared/SharedData.h"

namespace lexmira {

SharedUserInfoProvider::SharedUserInfoProvider(const SharedData& sharedData)
    : sharedData_(sharedData)
{
}

std::optional<std::string> SharedUserInfoProvider::containerId() const
{
    if (const auto info = sharedData_.userInfo.value())
        return info->containerId;
    return sharedData_.companionContainerId.value();
}

std::optional<std::string> SharedUserInfoProvider::userId() const
{
    if (const auto info = sharedData_.userInfo.value())
        return info->userId;
    return std::nullopt;
}

} // namespace lexmira
