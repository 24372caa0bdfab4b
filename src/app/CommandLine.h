// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace lexmira {

// What the process was asked to do on its command line.
struct CommandLine {
    enum class Action { run, showHelp, showVersion, doctor, fail };

    Action action = Action::run;
    // The URL to open (a sign-in callback), when one was given.
    std::optional<QString> url;
    // For doctor: the report as JSON instead of a table.
    bool json = false;
    // Help text, version line or error message, for the actions that print.
    QString text;

    // arguments[0] is the program name.
    static CommandLine parse(const QStringList& arguments, const QString& version);
};

} // namespace lexmira
