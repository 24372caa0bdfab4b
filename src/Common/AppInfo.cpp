// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "Common/AppInfo.h"

#include "util/FatalError.h"

namespace lexmira {

namespace {

constexpr auto bundleNameKey = "CFBundleName";
constexpr std::string_view extensionSuffix = ".ext";

std::string readAppName(const Bundle& bundle)
{
    const auto info = bundle.infoDictionary();
    if (!info)
        fatalError("The bundle has no information dictionary");
    const auto name = info->find(bundleNameKey);
    if (name == info->end())
        fatalError("The bundle's information dictionary has no name");
    if (!name->is_string())
        fatalError("The bundle's name is not a string");
    return name->get<std::string>();
}

std::string readExtensionBundleIdentifier(const Bundle& bundle)
{
    const auto identifier = bundle.bundleIdentifier();
    if (!identifier)
        fatalError("The bundle has no identifier");
    return identifier->toStdString() + std::string(extensionSuffix);
}

} // namespace

AppInfo::AppInfo(Component component, const Bundle& bundle)
    : appName(readAppName(bundle))
    , extensionBundleIdentifier(readExtensionBundleIdentifier(bundle))
    , component(component)
{
}

std::string_view rawValue(AppInfo::Component component)
{
    switch (component) {
    case AppInfo::Component::companion:
        return "companion";
    case AppInfo::Component::native:
        return "native";
    }
    return {};
}

std::optional<AppInfo::Component> componentFromRawValue(std::string_view raw)
{
    for (const auto component : {AppInfo::Component::companion, AppInfo::Component::native})
        if (rawValue(component) == raw)
            return component;
    return std::nullopt;
}

} // namespace lexmira
