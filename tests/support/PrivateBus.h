// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "support/ChildProcess.h"

#include <QString>
#include <QTemporaryDir>

#include <map>
#include <memory>

namespace lexmira {

namespace test {

// A session bus of the test's own (a dbus-daemon child process) that no other test sees. It
// starts only the services given to it, so every desktop service the test session offers is
// absent from it unless given. Stopped by the destructor, with what it started.
class PrivateBus {
public:
    // services: bus name → the command line that serves it.
    explicit PrivateBus(const std::map<QString, QString>& services = {});
    ~PrivateBus();
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    bool isRunning() const { return !address_.isEmpty(); }
    // For DBUS_SESSION_BUS_ADDRESS.
    const QString& address() const { return address_; }
    // Where its service files are.
    QString serviceDirectory() const;

private:
    QTemporaryDir dir_;
    std::unique_ptr<ChildProcess> daemon_;
    QString address_;
};

} // namespace test

} // namespace lexmira
