// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "app/CommandLine.h"

#include <gtest/gtest.h>

namespace lexmira {

namespace {

CommandLine parse(QStringList arguments)
{
    arguments.prepend(QStringLiteral("lexmira-companion"));
    return CommandLine::parse(arguments, QStringLiteral("1.2.3"));
}

TEST(CommandLine, NoArgumentRunsWithoutUrl)
{
    const auto command = parse({});
    EXPECT_EQ(command.action, CommandLine::Action::run);
    EXPECT_FALSE(command.url.has_value());
}

TEST(CommandLine, OneArgumentIsTheUrlToOpen)
{
    const auto command =
        parse({QStringLiteral("lexmira.extension://oauth?code=a&code_challenge=b")});
    EXPECT_EQ(command.action, CommandLine::Action::run);
    EXPECT_EQ(command.url, QStringLiteral("lexmira.extension://oauth?code=a&code_challenge=b"));
}

TEST(CommandLine, VersionPrintsTheVersion)
{
    const auto command = parse({QStringLiteral("--version")});
    EXPECT_EQ(command.action, CommandLine::Action::showVersion);
    EXPECT_EQ(command.text, QStringLiteral("lexmira-companion 1.2.3"));
}

TEST(CommandLine, HelpNamesTheProgramAndTheUrlArgument)
{
    const auto command = parse({QStringLiteral("--help")});
    EXPECT_EQ(command.action, CommandLine::Action::showHelp);
    EXPECT_TRUE(command.text.contains(QStringLiteral("Usage: lexmira-companion")));
    EXPECT_TRUE(command.text.contains(QStringLiteral("url")));
}

TEST(CommandLine, HelpDescribesTheDoctor)
{
    const auto command = parse({QStringLiteral("--help")});
    EXPECT_TRUE(command.text.contains(QStringLiteral("--doctor")));
    EXPECT_TRUE(command.text.contains(QStringLiteral("--json")));
}

TEST(CommandLine, DoctorPrintsATableOrJson)
{
    const auto table = parse({QStringLiteral("--doctor")});
    EXPECT_EQ(table.action, CommandLine::Action::doctor);
    EXPECT_FALSE(table.json);
    const auto json = parse({QStringLiteral("--doctor"), QStringLiteral("--json")});
    EXPECT_EQ(json.action, CommandLine::Action::doctor);
    EXPECT_TRUE(json.json);
}

TEST(CommandLine, DoctorTakesNoUrlAndJsonNeedsTheDoctor)
{
    EXPECT_EQ(parse({QStringLiteral("--doctor"), QStringLiteral("lexmira.extension://oauth")}).action,
              CommandLine::Action::fail);
    EXPECT_EQ(parse({QStringLiteral("--json")}).action, CommandLine::Action::fail);
}

TEST(CommandLine, UnknownOptionFails)
{
    EXPECT_EQ(parse({QStringLiteral("--frobnicate")}).action, CommandLine::Action::fail);
}

TEST(CommandLine, TwoUrlsFail)
{
    EXPECT_EQ(parse({QStringLiteral("a:"), QStringLiteral("b:")}).action,
              CommandLine::Action::fail);
}

TEST(CommandLine, QtPlatformOptionsAreLeftToQt)
{
    const auto command =
        parse({QStringLiteral("-platform"), QStringLiteral("offscreen"), QStringLiteral("x:y")});
    EXPECT_EQ(command.action, CommandLine::Action::run);
    EXPECT_EQ(command.url, QStringLiteral("x:y"));
}

} // namespace

} // namespace lexmira
