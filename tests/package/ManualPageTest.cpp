// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QSet>

namespace lexmira {

namespace {

const QString manualDir = QStringLiteral(LEXMIRA_MANUAL_DIR);

QString manualPage(const QString& program)
{
    QFile file(manualDir + QLatin1Char('/') + program + QStringLiteral(".1"));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QString output(const QString& program, const QStringList& arguments, QString* errors = nullptr)
{
    QProcess process;
    process.setProcessEnvironment(test::childEnvironment());
    process.start(program, arguments);
    process.waitForFinished(30'000);
    if (errors)
        *errors = QString::fromUtf8(process.readAllStandardError());
    return QString::fromUtf8(process.readAllStandardOutput());
}

// Every option a program's help names, long and short.
QSet<QString> optionsIn(const QString& help)
{
    QSet<QString> options;
    static const QRegularExpression option(QStringLiteral(R"((?<![\w-])(--?[a-z][a-z-]*))"));
    for (const auto& match : option.globalMatch(help))
        options.insert(match.captured(1));
    return options;
}

// An option as the page writes it, with minus signs that can be copied.
QString inRoff(const QString& option)
{
    return QString(option).replace(QLatin1Char('-'), QStringLiteral("\\-"));
}

void expectPageNamesEveryOption(const QString& program, const QString& binary,
                                const QList<QStringList>& helpCommands)
{
    const QString page = manualPage(program);
    ASSERT_FALSE(page.isEmpty()) << qPrintable(program);
    for (const auto& command : helpCommands) {
        const QSet<QString> options = optionsIn(output(binary, command));
        ASSERT_FALSE(options.isEmpty()) << qPrintable(command.join(QLatin1Char(' ')));
        for (const QString& option : options)
            EXPECT_TRUE(page.contains(inRoff(option)))
                << qPrintable(program) << ".1 lacks " << qPrintable(option) << " of "
                << qPrintable(command.join(QLatin1Char(' ')));
    }
}

TEST(ManualPages, CompanionPageNamesEveryOptionOfItsHelp)
{
    expectPageNamesEveryOption(QStringLiteral("lexmira-companion"), test::companionBinary(),
                               {{QStringLiteral("--help")}});
}

TEST(ManualPages, ExtensionHostPageNamesEveryOptionOfItsHelp)
{
    expectPageNamesEveryOption(QStringLiteral("lexmira-extension-host"),
                               test::toolBinary(QStringLiteral("lexmira-extension-host")),
                               {{QStringLiteral("--help")},
                                {QStringLiteral("install"), QStringLiteral("--help")},
                                {QStringLiteral("uninstall"), QStringLiteral("--help")},
                                {QStringLiteral("status"), QStringLiteral("--help")}});
}

TEST(ManualPages, PagesFormatWithoutWarnings)
{
    for (const char* program : {"lexmira-companion", "lexmira-extension-host"}) {
        const QString path =
            manualDir + QLatin1Char('/') + QLatin1String(program) + QStringLiteral(".1");
        ASSERT_TRUE(QFile::exists(path)) << program;
        QString warnings;
        const QString text =
            output(QStringLiteral("man"),
                   {QStringLiteral("--warnings"), QStringLiteral("-l"), path}, &warnings);
        EXPECT_TRUE(text.contains(QStringLiteral("SYNOPSIS"))) << program;
        EXPECT_EQ(warnings, QString()) << program;
    }
}

} // namespace

} // namespace lexmira
