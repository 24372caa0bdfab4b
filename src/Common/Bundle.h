// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <nlohmann/json.hpp>

#include <QString>

#include <optional>

namespace lexmira {

// The application bundle: a directory holding Info.json, the resources and the artwork.
class Bundle {
public:
    explicit Bundle(QString directory);

    const QString& directory() const { return directory_; }

    // Info.json as an object; none when the file is missing, unreadable or not a JSON object.
    std::optional<nlohmann::json> infoDictionary() const;
    // "CFBundleName" from Info.json, when it is a string.
    std::optional<QString> name() const;
    // "CFBundleIdentifier" from Info.json, when it is a string.
    std::optional<QString> bundleIdentifier() const;
    // "CFBundleShortVersionString" from Info.json, when it is a string.
    std::optional<QString> shortVersion() const;
    // The path of resource "<name>.<type>", when such a file exists.
    std::optional<QString> pathForResource(const QString& name, const QString& type) const;

private:
    std::optional<QString> infoString(const char* key) const;

    QString directory_;
};

} // namespace lexmira
