// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "extensionhost/InstalledBrowsers.h"

#include "extensionhost/Browsers.h"

namespace lexmira {

namespace {

std::optional<BrowserRegistry::Browser> browserOf(const std::optional<Installation>& installation)
{
    if (!installation)
        return std::nullopt;
    const auto known = Browsers::find(installation->browser);
    if (!known)
        return std::nullopt;
    return BrowserRegistry::Browser{
        installation->browser, known->displayName, installation->command,
        Browsers::settingsPageUrl(known->family, installation->extensionId)};
}

} // namespace

InstalledBrowsers::InstalledBrowsers(Installations installations)
    : installations_(std::move(installations))
{
}

std::optional<BrowserRegistry::Browser>
InstalledBrowsers::forConnection(Family family, const QString& extensionId) const
{
    return browserOf(installations_.forConnection(
        family == Family::firefox ? BrowserFamily::Firefox : BrowserFamily::Chromium, extensionId));
}

std::optional<BrowserRegistry::Browser> InstalledBrowsers::mostRecent() const
{
    return browserOf(installations_.mostRecent());
}

} // namespace lexmira
