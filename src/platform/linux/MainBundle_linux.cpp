// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "platform/MainBundle.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace lexmira {

QString mainBundleDirectory()
{
    const QString override = qEnvironmentVariable("LEXMIRA_BUNDLE_DIR");
    if (!override.isEmpty())
        return override;
    // /proc/self/exe rather than QCoreApplication, so the bundle can be found before (and
    // without) an application object.
    const QFileInfo executable(QStringLiteral("/proc/self/exe"));
    const QDir binDir = QFileInfo(executable.canonicalFilePath()).absoluteDir();
    return QDir::cleanPath(binDir.filePath(QStringLiteral("../share/lexmira-companion")));
}

} // namespace lexmira
