// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

// Reads one key of the application's own settings in a process of its own and prints it:
// "<type name> <value>", a date as ISO 8601 with milliseconds and offset.
//   lexmira-settings-probe <bundle identifier> <key>

#include "platform/UserDefaults.h"

#include <QCoreApplication>
#include <QDateTime>

#include <cstdio>

using namespace lexmira;

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 3)
        return 2;
    const auto settings = UserDefaults::standard(arguments.at(1));
    const QVariant value = settings->object(arguments.at(2));
    const QString text = value.typeId() == QMetaType::QDateTime
                             ? value.toDateTime().toString(Qt::ISODateWithMs)
                             : value.toString();
    std::printf("%s %s\n", value.metaType().name() ? value.metaType().name() : "none",
                qUtf8Printable(text));
    return 0;
}
