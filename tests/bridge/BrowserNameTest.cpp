// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "bridge/BrowserName.h"
#include "QtPrinters.h"

#include <gtest/gtest.h>

namespace lexmira {

namespace {

const QString reminder = QStringLiteral("Click Open to enable it in Safari settings");
const QString body = QStringLiteral(
    "If you don\u2019t see Lexmira in your \nSafari toolbar, try restarting Safari.");

TEST(BrowserName, ReplacesEveryMentionOfTheWrittenBrowserAndNothingElse)
{
    EXPECT_EQ(BrowserName::in(reminder, QStringLiteral("Chromium")),
              QStringLiteral("Click Open to enable it in Chromium settings"));
    EXPECT_EQ(
        BrowserName::in(body, QStringLiteral("Firefox")),
        QStringLiteral(
            "If you don\u2019t see Lexmira in your \nFirefox toolbar, try restarting Firefox."));
    EXPECT_EQ(BrowserName::in(body, QStringLiteral("Microsoft Edge")),
              QStringLiteral("If you don\u2019t see Lexmira in your \nMicrosoft Edge toolbar, try "
                             "restarting Microsoft Edge."));
}

TEST(BrowserName, NoNameLeavesTheTextExactlyAsWritten)
{
    EXPECT_EQ(BrowserName::in(reminder, QString()), reminder);
    EXPECT_EQ(BrowserName::in(body, QString()), body);
}

TEST(BrowserName, ATextThatNamesNoBrowserIsUnchanged)
{
    const QString title = QStringLiteral("Lexmira encountered a problem");
    EXPECT_EQ(BrowserName::in(title, QStringLiteral("Chromium")), title);
}

TEST(BrowserName, NamesThatCannotStandInATextAreNotUsed)
{
    for (const QString& name :
         {QStringLiteral("Fire\nfox"), QStringLiteral("Fire\u2028fox"), QStringLiteral("Fire\tfox"),
          QStringLiteral(" Firefox"), QStringLiteral("Firefox "), QStringLiteral("Fire\u0007fox"),
          QStringLiteral("\u202EFirefox"), QString(BrowserName::maxLength + 1, QLatin1Char('x'))}) {
        EXPECT_FALSE(BrowserName::isUsable(name)) << name.toStdString();
        EXPECT_EQ(BrowserName::in(reminder, name), reminder) << name.toStdString();
    }
}

TEST(BrowserName, ANameAtTheLengthBoundIsUsed)
{
    const QString longest(BrowserName::maxLength, QLatin1Char('x'));
    EXPECT_TRUE(BrowserName::isUsable(longest));
    EXPECT_EQ(BrowserName::in(QStringLiteral("Safari"), longest), longest);
    EXPECT_TRUE(BrowserName::isUsable(QStringLiteral("Navegador Ñandú")));
}

} // namespace

} // namespace lexmira
