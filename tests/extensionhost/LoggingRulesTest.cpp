// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "support/TestSupport.h"

#include <QProcess>
#include <QProcessEnvironment>

#include <gtest/gtest.h>

namespace lexmira {

namespace {

struct BrokerRun {
    int exitCode = -1;
    QString err;
};

// A broker started where there is no session bus: it cannot take its name, warns why under
// "lexmira.broker" and exits 1. rules is the QT_LOGGING_RULES it runs with, if any.
BrokerRun runBrokerWithoutBus(const QString& rules)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"),
                       QStringLiteral("unix:path=/nonexistent/lexmira-bus"));
    // What reaches stderr, and how it is prefixed, is decided by these alone.
    environment.remove(QStringLiteral("QT_MESSAGE_PATTERN"));
    environment.remove(QStringLiteral("JOURNAL_STREAM"));
    environment.remove(QStringLiteral("QT_LOGGING_RULES"));
    if (!rules.isEmpty())
        environment.insert(QStringLiteral("QT_LOGGING_RULES"), rules);
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(test::toolBinary(QStringLiteral("lexmira-extension-host")),
                  {QStringLiteral("--broker")});
    if (!process.waitForFinished(30'000))
        return {};
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAllStandardError())};
}

TEST(LoggingRules, ABrokerWithoutABusWarnsUnderItsCategory)
{
    const BrokerRun run = runBrokerWithoutBus({});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_TRUE(run.err.contains(QStringLiteral("lexmira.broker: no session bus")))
        << run.err.toStdString();
}

TEST(LoggingRules, SwitchingTheCategoryOffSilencesTheWarning)
{
    const BrokerRun run = runBrokerWithoutBus(QStringLiteral("lexmira.broker.warning=false"));
    EXPECT_EQ(run.exitCode, 1) << "the failure itself is unchanged";
    EXPECT_FALSE(run.err.contains(QStringLiteral("no session bus"))) << run.err.toStdString();
}

TEST(LoggingRules, SwitchingAnotherCategoryOffLeavesTheWarningOn)
{
    const BrokerRun run =
        runBrokerWithoutBus(QStringLiteral("lexmira.bus.warning=false;lexmira.host.warning=false"));
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_TRUE(run.err.contains(QStringLiteral("lexmira.broker: no session bus")))
        << run.err.toStdString();
}

TEST(LoggingRules, SwitchingAllOfTheProjectsCategoriesOffAndOneOnAgain)
{
    const BrokerRun off = runBrokerWithoutBus(QStringLiteral("lexmira.*=false"));
    EXPECT_EQ(off.exitCode, 1);
    EXPECT_FALSE(off.err.contains(QStringLiteral("no session bus"))) << off.err.toStdString();

    const BrokerRun on =
        runBrokerWithoutBus(QStringLiteral("lexmira.*=false;lexmira.broker.warning=true"));
    EXPECT_EQ(on.exitCode, 1);
    EXPECT_TRUE(on.err.contains(QStringLiteral("lexmira.broker: no session bus")))
        << on.err.toStdString();
}

} // namespace

} // namespace lexmira
