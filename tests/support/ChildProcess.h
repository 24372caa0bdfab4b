// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

namespace lexmira {

namespace test {

// A second process for the length of a test: started by the constructor, asked to end (then
// killed) by the destructor, and killed as well should the test process die first.
class ChildProcess {
public:
    enum class Stderr { forwarded, captured };

    ChildProcess(const QString& program, const QStringList& arguments,
                 const QProcessEnvironment& environment, Stderr stderrMode = Stderr::forwarded);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    QProcess& process() { return process_; }
    const QProcess& process() const { return process_; }
    bool running() const { return process_.state() == QProcess::Running; }

private:
    QProcess process_;
};

} // namespace test

} // namespace lexmira
