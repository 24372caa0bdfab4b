// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "platform/UserDefaults.h"

#include <QDateTime>
#include <QFileInfo>
#include <QSettings>
#include <QTimeZone>
#include <QUuid>

#include <gtest/gtest.h>

#include <sys/stat.h>

using namespace lexmira;

namespace {

class UserDefaultsTest : public ::testing::Test {
protected:
    // A settings file of this test's own in the session's configuration directory.
    const QString bundleId =
        QStringLiteral("com.lexmira.companion.defaults-") + QUuid::createUuid().toString(QUuid::Id128);
    const std::unique_ptr<UserDefaults> defaults = UserDefaults::standard(bundleId);

    QString path() const
    {
        return QSettings(QSettings::NativeFormat, QSettings::UserScope, bundleId).fileName();
    }

    // The file's identity and change time: a rewrite replaces the file, so either changes.
    std::pair<ino_t, timespec> fileStamp() const
    {
        struct stat status {};
        EXPECT_EQ(::stat(QFile::encodeName(path()).constData(), &status), 0);
        return {status.st_ino, status.st_ctim};
    }

    static bool same(const std::pair<ino_t, timespec>& a, const std::pair<ino_t, timespec>& b)
    {
        return a.first == b.first && a.second.tv_sec == b.second.tv_sec &&
               a.second.tv_nsec == b.second.tv_nsec;
    }
};

} // namespace

TEST_F(UserDefaultsTest, StoringTheValueAlreadyStoredLeavesTheFileAlone)
{
    defaults->setBool(false, QStringLiteral("flag"));
    defaults->setObject(QDateTime(QDate(2026, 11, 23), QTime(3, 12), QTimeZone::utc()),
                        QStringLiteral("date"));
    const auto before = fileStamp();

    const auto again = UserDefaults::standard(bundleId);
    again->setBool(false, QStringLiteral("flag"));
    again->setObject(QDateTime(QDate(2026, 11, 23), QTime(3, 12), QTimeZone::utc()),
                     QStringLiteral("date"));
    again->setObject(QVariant(), QStringLiteral("never-set"));

    EXPECT_TRUE(same(fileStamp(), before));
    EXPECT_EQ(again->object(QStringLiteral("flag")).toBool(), false);
}

TEST_F(UserDefaultsTest, AChangedValueIsWritten)
{
    defaults->setBool(false, QStringLiteral("flag"));
    defaults->setBool(true, QStringLiteral("flag"));
    defaults->setObject(QVariant(), QStringLiteral("flag"));
    defaults->setObject(QStringLiteral("text"), QStringLiteral("other"));

    const QSettings file(path(), QSettings::NativeFormat);
    EXPECT_FALSE(file.contains(QStringLiteral("flag")));
    EXPECT_EQ(file.value(QStringLiteral("other")).toString(), QStringLiteral("text"));
}

TEST_F(UserDefaultsTest, AValueChangedInTheFileMeanwhileIsStillOverwritten)
{
    defaults->setBool(false, QStringLiteral("flag"));
    {
        // Another process of the application changes the value behind this one's back.
        QSettings other(path(), QSettings::NativeFormat);
        other.setValue(QStringLiteral("flag"), true);
    }
    defaults->setBool(false, QStringLiteral("flag"));

    const QSettings file(path(), QSettings::NativeFormat);
    EXPECT_EQ(file.value(QStringLiteral("flag")).toBool(), false);
}
