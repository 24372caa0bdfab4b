// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "app/CommandLine.h"

#include <QCommandLineParser>
#include <QRegularExpression>

namespace lexmira {

CommandLine CommandLine::parse(const QStringList& arguments, const QString& version)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Lexmira companion: enables the Lexmira browser extension and completes "
                       "its sign-in.\nA second launch hands its request to the running instance."));
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")},
                                  QStringLiteral("Show this help and exit."));
    const QCommandLineOption versionOption({QStringLiteral("v"), QStringLiteral("version")},
                                           QStringLiteral("Show the version and exit."));
    const QCommandLineOption doctorOption(
        QStringLiteral("doctor"),
        QStringLiteral("Check what the companion depends on (session bus, shared suite, Secret "
                       "Service, extension host, settings portal, notification server, "
                       "services), print a verdict for each and exit: 0 when nothing failed, 1 "
                       "otherwise. Needs no display and does not start the companion."));
    const QCommandLineOption jsonOption(
        QStringLiteral("json"), QStringLiteral("With --doctor: print the report as JSON."));
    parser.addOption(help);
    parser.addOption(versionOption);
    parser.addOption(doctorOption);
    parser.addOption(jsonOption);
    parser.addPositionalArgument(QStringLiteral("url"),
                                 QStringLiteral("A lexmira.extension:// URL to open."),
                                 QStringLiteral("[url]"));
    // The platform plugins' own options (-platform, -display, …) are Qt's to read.
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);

    CommandLine result;
    QStringList ours{arguments.value(0)};
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        const QString& argument = arguments.at(i);
        static const QStringList qtOptionsWithValue{
            QStringLiteral("-platform"),      QStringLiteral("-display"),
            QStringLiteral("-style"),         QStringLiteral("-qwindowgeometry"),
            QStringLiteral("-qwindowtitle"),  QStringLiteral("-qwindowicon"),
            QStringLiteral("-platformtheme"), QStringLiteral("-plugin")};
        if (qtOptionsWithValue.contains(argument)) {
            ++i;
            continue;
        }
        ours << argument;
    }
    if (!parser.parse(ours)) {
        result.action = Action::fail;
        result.text = parser.errorText();
        return result;
    }
    if (parser.isSet(help)) {
        result.action = Action::showHelp;
        // Named as installed, whatever path it was started by.
        result.text = parser.helpText().replace(QRegularExpression(QStringLiteral("^Usage: \\S+")),
                                                QStringLiteral("Usage: lexmira-companion"));
        return result;
    }
    if (parser.isSet(versionOption)) {
        result.action = Action::showVersion;
        result.text = QStringLiteral("lexmira-companion ") + version;
        return result;
    }
    const QStringList positional = parser.positionalArguments();
    if (parser.isSet(doctorOption)) {
        if (!positional.isEmpty()) {
            result.action = Action::fail;
            result.text = QStringLiteral("--doctor takes no URL.");
            return result;
        }
        result.action = Action::doctor;
        result.json = parser.isSet(jsonOption);
        return result;
    }
    if (parser.isSet(jsonOption)) {
        result.action = Action::fail;
        result.text = QStringLiteral("--json goes with --doctor.");
        return result;
    }
    if (positional.size() > 1) {
        result.action = Action::fail;
        result.text = QStringLiteral("Expected at most one URL, got %1.").arg(positional.size());
        return result;
    }
    if (!positional.isEmpty())
        result.url = positional.first();
    return result;
}

} // namespace lexmira
