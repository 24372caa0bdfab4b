// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "platform/linux/SuiteKeyFileName.h"

#include <QByteArray>

namespace lexmira {

std::string SuiteKeyFileName::fromKey(const QString& key)
{
    static constexpr char hex[] = "0123456789ABCDEF";
    const QByteArray bytes = key.toUtf8();
    std::string name;
    name.reserve(static_cast<std::size_t>(bytes.size()));
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        const bool plain = (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') ||
                           (byte >= '0' && byte <= '9') || byte == '_' || byte == '-' ||
                           (byte == '.' && i > 0);
        if (plain) {
            name.push_back(static_cast<char>(byte));
        } else {
            name.push_back('%');
            name.push_back(hex[byte >> 4]);
            name.push_back(hex[byte & 0xF]);
        }
    }
    return name;
}

} // namespace lexmira
