// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "diagnostics/Diagnosis.h"

#include <nlohmann/json.hpp>

#include <QStringList>

#include <gtest/gtest.h>

namespace lexmira {

namespace {

Check check(const char* id, Verdict verdict, const char* remedy = "")
{
    return {QString::fromLatin1(id), QStringLiteral("Area"),     QString::fromLatin1(id), verdict,
            QStringLiteral("found"), QString::fromLatin1(remedy)};
}

TEST(DiagnosisTest, NoChecksIsAVerdictOfOk)
{
    EXPECT_EQ(Diagnosis().verdict(), Verdict::ok);
    EXPECT_EQ(Diagnosis().exitCode(), 0);
}

TEST(DiagnosisTest, WarningsAloneExitWithZero)
{
    Diagnosis diagnosis;
    diagnosis.add({check("a", Verdict::ok), check("b", Verdict::warning, "wait")});
    EXPECT_EQ(diagnosis.verdict(), Verdict::warning);
    EXPECT_EQ(diagnosis.exitCode(), 0);
}

TEST(DiagnosisTest, OneFailureExitsWithOne)
{
    Diagnosis diagnosis;
    diagnosis.add({check("a", Verdict::fail, "fix"), check("b", Verdict::warning, "wait")});
    EXPECT_EQ(diagnosis.verdict(), Verdict::fail);
    EXPECT_EQ(diagnosis.exitCode(), 1);
}

TEST(DiagnosisTest, TheTableGivesEachLineItsVerdictAndTheRemedyBelowWhatIsNotOk)
{
    Diagnosis diagnosis;
    diagnosis.add({check("first", Verdict::ok, "never shown"),
                   check("second", Verdict::fail, "fix it"),
                   check("third", Verdict::warning, "look at it")});
    const QStringList lines = diagnosis.table().split(QLatin1Char('\n'));
    ASSERT_GE(lines.size(), 7) << diagnosis.table().toStdString();
    EXPECT_EQ(lines[0], QStringLiteral("Component  Check   Verdict  Found"));
    EXPECT_EQ(lines[1], QStringLiteral("Area       first   ok       found"));
    // The component is named once.
    EXPECT_EQ(lines[2], QStringLiteral("           second  FAIL     found"));
    EXPECT_EQ(lines[3], QStringLiteral("                            What to do: fix it"));
    EXPECT_EQ(lines[4], QStringLiteral("           third   warning  found"));
    EXPECT_EQ(lines[5], QStringLiteral("                            What to do: look at it"));
    EXPECT_FALSE(diagnosis.table().contains(QStringLiteral("never shown")));
    EXPECT_TRUE(lines[7].startsWith(QStringLiteral("1 check(s) failed")));
}

TEST(DiagnosisTest, AMultiLineFindingStaysOnItsLine)
{
    Diagnosis diagnosis;
    Check multiLine = check("a", Verdict::fail);
    multiLine.detail = QStringLiteral("one\ntwo");
    diagnosis.add(multiLine);
    EXPECT_TRUE(diagnosis.table().contains(QStringLiteral("FAIL     one two\n")))
        << diagnosis.table().toStdString();
}

TEST(DiagnosisTest, TheJsonHoldsEveryCheckWithItsVerdict)
{
    Diagnosis diagnosis;
    diagnosis.add({check("a", Verdict::ok), check("b", Verdict::warning, "wait"),
                   check("c", Verdict::fail, "fix")});
    const auto json = nlohmann::json::parse(diagnosis.json().toStdString());
    EXPECT_EQ(json.at("verdict"), "fail");
    ASSERT_EQ(json.at("checks").size(), 3u);
    EXPECT_EQ(json.at("checks")[0].at("id"), "a");
    EXPECT_EQ(json.at("checks")[0].at("verdict"), "ok");
    EXPECT_EQ(json.at("checks")[1].at("verdict"), "warning");
    EXPECT_EQ(json.at("checks")[2].at("verdict"), "fail");
    EXPECT_EQ(json.at("checks")[2].at("remedy"), "fix");
    EXPECT_EQ(json.at("checks")[2].at("detail"), "found");
}

} // namespace

} // namespace lexmira
