// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "app/Env.h"

#include <QCoreApplication>

using namespace lexmira;

// Builds the application's environment as the application does and logs twice through it: once
// through env's log client and once through a copy. Runs until it is terminated.
int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    env().skrivo().log(CompanionLogger::getExtensionState, LogLevel::error, "first");
    const Skrivo copy = env().skrivo();
    copy.log(CompanionLogger::openSafari, LogLevel::error, "second");
    return application.exec();
}
