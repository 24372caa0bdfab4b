// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "extensionhost/Installations.h"
#include "platform/SystemHealth.h"

#include <QString>
#include <QStringList>
#include <QTextStream>

#include <functional>
#include <optional>
#include <vector>

namespace lexmira {

// What status finds of the broker on the session bus; asked once per status.
using BrokerQuery = std::function<BrokerHealth()>;

// Exit codes of the subcommands.
constexpr int kExitOk = 0;
constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;

// Whether arguments (without the program name) start with install, uninstall or status.
bool isInstallCommand(const QStringList& arguments);

// Runs install, uninstall or status. arguments start with the subcommand; hostPath is the
// absolute path of this executable, written into manifests. broker is called only by status;
// when it is empty, status reports no broker. Results go to out, errors and usage mistakes to err. Returns an exit code.
int runInstallCommand(const QStringList& arguments, const Installations& installations,
                      const QString& hostPath, const BrokerQuery& broker,
                      QTextStream& out, QTextStream& err);

// The overview of all subcommands, for lexmira-extension-host --help.
QString extensionHostUsage();

} // namespace lexmira
