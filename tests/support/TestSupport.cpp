// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "support/TestSupport.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QDirIterator>
#include <QEventLoop>
#include <QFile>
#include <QThread>

#include <utility>

namespace lexmira {

namespace test {

bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds timeout)
{
    const QDeadlineTimer deadline(timeout);
    while (!condition()) {
        if (deadline.hasExpired())
            return condition();
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(2);
    }
    return true;
}

void spin(std::chrono::milliseconds duration)
{
    const QDeadlineTimer deadline(duration);
    while (!deadline.hasExpired()) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QThread::msleep(2);
    }
}

void useLoopbackServices()
{
    // Port 9 (discard) on loopback: connections are refused at once.
    const std::pair<const char*, const char*> overrides[] = {
        {"LEXMIRA_ACCOUNT_HOST", "127.0.0.1:9"},
        {"LEXMIRA_ANALYTICS_URL", "https://127.0.0.1:9"},
        {"LEXMIRA_LOG_HOST", "127.0.0.1:9"},
    };
    for (const auto& [name, value] : overrides)
        if (qEnvironmentVariableIsEmpty(name))
            qputenv(name, value);
}

QString companionBinary()
{
    return QStringLiteral(LEXMIRA_COMPANION_BINARY);
}

QString builtBundleDir()
{
    return QStringLiteral(LEXMIRA_SOURCE_BUNDLE_DIR);
}

QString toolBinary(const QString& name)
{
    return QDir(QStringLiteral(LEXMIRA_TOOLS_DIR)).filePath(name);
}

TemporaryBundle::TemporaryBundle()
{
    QDirIterator files(builtBundleDir(), QDir::Files);
    while (files.hasNext()) {
        const QString source = files.next();
        QFile::copy(source, QDir(dir_.path()).filePath(files.fileName()));
    }
}

void TemporaryBundle::write(const QString& fileName, const QByteArray& contents)
{
    QFile file(QDir(dir_.path()).filePath(fileName));
    if (file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        file.write(contents);
}

void TemporaryBundle::remove(const QString& fileName)
{
    QFile::remove(QDir(dir_.path()).filePath(fileName));
}

QProcessEnvironment childEnvironment(const QString& bundleDir)
{
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    environment.insert(QStringLiteral("LEXMIRA_BUNDLE_DIR"), bundleDir);
    return environment;
}

} // namespace test

} // namespace lexmira
