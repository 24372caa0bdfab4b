// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "extensionhost/ConnectionSummary.h"
#include "extensionhost/Installations.h"

#include <QString>
#include <QStringList>
#include <QTextStream>

#include <functional>
#include <optional>
#include <vector>

// The broker's connections as status shows them; nullopt when no broker is running.
using ConnectionsQuery = std::function<std::optional<std::vector<ConnectionSummary>>()>;

// Exit codes of the subcommands.
constexpr int kExitOk = 0;
constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;

// Whether arguments (without the program name) start with install, uninstall or status.
bool isInstallCommand(const QStringList& arguments);

// Runs install, uninstall or status. arguments start with the subcommand; hostPath is the
// absolute path of this executable, written into manifests. connections is called only by
// status. Results go to out, errors and usage mistakes to err. Returns an exit code.
int runInstallCommand(const QStringList& arguments, const Installations& installations,
                      const QString& hostPath, const ConnectionsQuery& connections,
                      QTextStream& out, QTextStream& err);

// The overview of all subcommands, for lexmira-extension-host --help.
QString extensionHostUsage();
