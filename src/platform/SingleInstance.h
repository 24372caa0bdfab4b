// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/LaunchActivation.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

namespace lexmira {

// Keeps the application to one instance per session. The first process becomes the instance;
// a later launch hands its request (show the window, or open a URL) to it and exits.
class SingleInstance : public QObject {
    Q_OBJECT

public:
    enum class Role {
        primary,   // this process is the instance and receives requests
        secondary, // another process is the instance; forward() to it
        standalone // no session bus: this process runs alone and receives nothing
    };

    using QObject::QObject;

    // Claims the instance. Signals are emitted on the main thread, and only for the primary.
    virtual Role claim() = 0;
    // Secondary only: asks the instance to show itself (no URL) or to open url, handing over
    // launch so the instance may come to the front. Waits for the answer, since a forwarding
    // process has nothing else to do. Returns false and warns (lexmira.bus) with the reason when
    // the instance could not be reached.
    virtual bool forward(const std::optional<QString>& url, const LaunchActivation& launch) = 0;

    static std::unique_ptr<SingleInstance> create();

    // Before anything of the user interface is loaded: hands the request to the running
    // instance, as forward() does, on a bus connection of its own. None when no instance is
    // running (and none is started for the call) or the session bus cannot be reached; the
    // launch then goes on to claim the instance. Otherwise whether the instance took the
    // request; why not is written to stderr. Blocks until the instance answers.
    static std::optional<bool> handOverIfRunning(const std::optional<QString>& url,
                                                 const LaunchActivation& launch);

Q_SIGNALS:
    // Another launch without a URL: show the window if it is not visible, and bring it to the
    // front with launch.
    void activateRequested(const LaunchActivation& launch);
    // Another launch with URLs, in order; launch brings the application to the front.
    void openRequested(const QStringList& uris, const LaunchActivation& launch);
};

} // namespace lexmira
