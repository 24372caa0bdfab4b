// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Common/Bundle.h"

#include <optional>
#include <string>
#include <string_view>

namespace lexmira {

// Identity of this client, read from the bundle.
struct AppInfo {
    enum class Component { companion, native };

    std::string appName;
    std::string extensionBundleIdentifier;
    Component component;

    // Reads the bundle; a missing name or identifier stops the process.
    AppInfo(Component component, const Bundle& bundle);
};

std::string_view rawValue(AppInfo::Component component);
std::optional<AppInfo::Component> componentFromRawValue(std::string_view raw);

} // namespace lexmira
