// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Common/EnvCommon.h"

#include <QDir>
#include <QTemporaryDir>

namespace lexmira {

// Points XDG_CONFIG_HOME at a fresh directory for the life of the test, so each test has a
// suite of its own at the contracted place inside it.
class ScopedConfigHome {
public:
    ScopedConfigHome()
        : previous_(qgetenv("XDG_CONFIG_HOME"))
    {
        qputenv("XDG_CONFIG_HOME", dir_.path().toUtf8());
    }
    ~ScopedConfigHome() { qputenv("XDG_CONFIG_HOME", previous_); }
    ScopedConfigHome(const ScopedConfigHome&) = delete;
    ScopedConfigHome& operator=(const ScopedConfigHome&) = delete;

    QString path() const { return dir_.path(); }
    QString groupContainers() const { return dir_.filePath(QStringLiteral("group-containers")); }
    QString suiteRoot(const QString& suiteName = QString::fromUtf8(appGroupSuiteName)) const
    {
        return QDir(groupContainers()).filePath(suiteName);
    }

private:
    QTemporaryDir dir_;
    QByteArray previous_;
};

} // namespace lexmira
