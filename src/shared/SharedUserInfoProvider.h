// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "shared/PartialUserInfoProvider.h"

namespace lexmira {

class SharedData;

// The current user as the shared suite knows it, read afresh on every access. Without a stored
// user, the container identifier falls back to the companion's own.
class SharedUserInfoProvider final : public PartialUserInfoProvider {
public:
    // sharedData must outlive the provider.
    explicit SharedUserInfoProvider(const SharedData& sharedData);

    std::optional<std::string> containerId() const override;
    std::optional<std::string> userId() const override;

private:
    const SharedData& sharedData_;
};

} // namespace lexmira
