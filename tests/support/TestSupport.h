// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QProcessEnvironment>
#include <QString>
#include <QTemporaryDir>

#include <chrono>
#include <functional>

namespace lexmira {

namespace test {

using namespace std::chrono_literals;

// Runs the event loop until condition holds or timeout passes. Returns the condition's value.
bool waitUntil(const std::function<bool()>& condition,
               std::chrono::milliseconds timeout = std::chrono::seconds(10));
// Runs the event loop for duration.
void spin(std::chrono::milliseconds duration);

// Points the service hosts of every environment this process builds, and of its children, at a
// loopback port where nothing listens, unless a test names its own. Test processes never reach
// the shipped placeholder hosts, not even through a name lookup.
void useLoopbackServices();

// The application binary and the bundle the build lays out beside it.
QString companionBinary();
QString builtBundleDir();
// A helper executable of tools/ or tests/ built into the same bin directory.
QString toolBinary(const QString& name);

// A throwaway bundle directory, a copy of the built bundle that a test may change.
class TemporaryBundle {
public:
    TemporaryBundle();
    QString path() const { return dir_.path(); }
    void write(const QString& fileName, const QByteArray& contents);
    void remove(const QString& fileName);

private:
    QTemporaryDir dir_;
};

// The environment for a child process of the application: the test's own session (bus,
// keyring, XDG directories) with the offscreen platform and the given bundle.
QProcessEnvironment childEnvironment(const QString& bundleDir = builtBundleDir());

} // namespace test

} // namespace lexmira
