// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QDBusArgument>
#include <QList>
#include <QMetaType>
#include <QString>

namespace lexmira {

// One attached host as com.lexmira.ExtensionHost1.Connections lists it: (ssssx).
struct HostConnectionRecord {
    QString connection;
    QString browser;
    QString browserName;
    QString extensionId;
    qint64 attachedAtMs = 0;
};

inline QDBusArgument& operator<<(QDBusArgument& argument, const HostConnectionRecord& record)
{
    argument.beginStructure();
    argument << record.connection << record.browser << record.browserName << record.extensionId
             << record.attachedAtMs;
    argument.endStructure();
    return argument;
}

inline const QDBusArgument& operator>>(const QDBusArgument& argument, HostConnectionRecord& record)
{
    argument.beginStructure();
    argument >> record.connection >> record.browser >> record.browserName >> record.extensionId >>
        record.attachedAtMs;
    argument.endStructure();
    return argument;
}

} // namespace lexmira

Q_DECLARE_METATYPE(lexmira::HostConnectionRecord)
