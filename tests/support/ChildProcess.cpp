// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "support/ChildProcess.h"

#include <sys/prctl.h>

#include <csignal>

namespace lexmira {

namespace test {

ChildProcess::ChildProcess(const QString& program, const QStringList& arguments,
                           const QProcessEnvironment& environment, Stderr stderrMode)
{
    process_.setProcessEnvironment(environment);
    if (stderrMode == Stderr::forwarded)
        process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process_.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
    process_.start(program, arguments);
    process_.waitForStarted();
}

ChildProcess::~ChildProcess()
{
    if (process_.state() == QProcess::NotRunning)
        return;
    process_.terminate();
    if (!process_.waitForFinished(10000))
        process_.kill();
    process_.waitForFinished();
}

} // namespace test

} // namespace lexmira
