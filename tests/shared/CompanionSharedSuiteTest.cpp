// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "SuiteTestSupport.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>

#include <sys/stat.h>

namespace lexmira {

namespace {

using namespace std::chrono_literals;

const char* const sharedKeys[] = {"userInfo", "companionContainerId",
                                  "message.oauthExchangeMessage",
                                  "message.oauthOpenLoginTabMessage"};

// The application running in the test's session with its own configuration directory, ended
// when the test ends.
class Companion {
public:
    explicit Companion(const ScopedConfigHome& config)
    {
        auto environment = test::childEnvironment();
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), config.path());
        process_.setProcessEnvironment(environment);
        process_.start(test::companionBinary());
        process_.waitForStarted();
    }
    ~Companion()
    {
        if (process_.state() != QProcess::NotRunning) {
            process_.terminate();
            if (!process_.waitForFinished(5000))
                process_.kill();
            process_.waitForFinished();
        }
    }

    bool running() const { return process_.state() == QProcess::Running; }
    // True when the process is still running after duration; false as soon as it ends (or when
    // it never started).
    bool keepsRunningFor(std::chrono::milliseconds duration)
    {
        return running() && !test::waitUntil([&] { return !running(); }, duration);
    }
    QString output()
    {
        return QString::fromUtf8(process_.readAllStandardError() +
                                 process_.readAllStandardOutput());
    }

private:
    QProcess process_;
};

void writeFile(const QString& path, const QByteArray& bytes)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(bytes);
}

TEST(CompanionSharedSuite, CreatesTheSuiteAtTheContractedPlaceWithMode0700)
{
    const ScopedConfigHome config;
    Companion companion(config);
    ASSERT_TRUE(test::waitUntil([&] { return QFileInfo(config.suiteRoot()).isDir(); }, 30s))
        << companion.output().toStdString();
    struct stat status {};
    ASSERT_EQ(::stat(QFile::encodeName(config.suiteRoot()).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0700u);
    EXPECT_TRUE(companion.keepsRunningFor(2s)) << companion.output().toStdString();
}

TEST(CompanionSharedSuite, KeepsRunningWhenEverySharedKeyHoldsGarbage)
{
    const ScopedConfigHome config;
    ASSERT_TRUE(QDir().mkpath(config.suiteRoot()));
    for (const char* key : sharedKeys)
        writeFile(QDir(config.suiteRoot()).filePath(QString::fromUtf8(key)),
                  QByteArray("\xff\x00[[{\"", 6));
    Companion companion(config);
    ASSERT_TRUE(companion.keepsRunningFor(3s)) << companion.output().toStdString();

    // Changed under the running application, every key notifies its observers again.
    const QByteArray garbage[] = {"[", "[1,2]", "\"bare\"", "[{\"userId\":1}]", "{}", ""};
    for (const auto& bytes : garbage)
        for (const char* key : sharedKeys)
            writeFile(QDir(config.suiteRoot()).filePath(QString::fromUtf8(key)), bytes);
    EXPECT_TRUE(companion.keepsRunningFor(3s)) << companion.output().toStdString();
}

TEST(CompanionSharedSuite, RunsWhenTheSuiteRootCannotBeCreated)
{
    const ScopedConfigHome config;
    ASSERT_TRUE(QDir().mkpath(config.groupContainers()));
    writeFile(config.suiteRoot(), "not a directory");
    Companion companion(config);
    EXPECT_TRUE(companion.keepsRunningFor(5s)) << companion.output().toStdString();
    EXPECT_TRUE(QFileInfo(config.suiteRoot()).isFile());
}

} // namespace

} // namespace lexmira
