// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "extensionhost/BrowserRegistry.h"
#include "extensionhost/Installations.h"

namespace lexmira {

// The browsers the host was installed for, as the broker and the host look them up. Reads the
// records afresh on every call, so an installation made while the broker runs is seen.
class InstalledBrowsers final : public BrowserRegistry {
public:
    explicit InstalledBrowsers(Installations installations);

    std::optional<Browser> forConnection(Family family, const QString& extensionId) const override;
    std::optional<Browser> mostRecent() const override;

private:
    Installations installations_;
};

} // namespace lexmira
