// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "Common/Bundle.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace lexmira {

Bundle::Bundle(QString directory)
    : directory_(std::move(directory))
{
}

std::optional<nlohmann::json> Bundle::infoDictionary() const
{
    QFile file(QDir(directory_).filePath(QStringLiteral("Info.json")));
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QByteArray bytes = file.readAll();
    auto info = nlohmann::json::parse(bytes.begin(), bytes.end(), nullptr, false);
    if (!info.is_object())
        return std::nullopt;
    return info;
}

std::optional<QString> Bundle::infoString(const char* key) const
{
    const auto info = infoDictionary();
    if (!info)
        return std::nullopt;
    const auto entry = info->find(key);
    if (entry == info->end() || !entry->is_string())
        return std::nullopt;
    return QString::fromStdString(entry->get<std::string>());
}

std::optional<QString> Bundle::name() const
{
    return infoString("CFBundleName");
}

std::optional<QString> Bundle::bundleIdentifier() const
{
    return infoString("CFBundleIdentifier");
}

std::optional<QString> Bundle::shortVersion() const
{
    return infoString("CFBundleShortVersionString");
}

std::optional<QString> Bundle::pathForResource(const QString& name, const QString& type) const
{
    const QString path = QDir(directory_).filePath(type.isEmpty() ? name : name + u'.' + type);
    if (!QFileInfo(path).isFile())
        return std::nullopt;
    return path;
}

} // namespace lexmira
