// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "logging/Skrivo.h"

#include <QObject>
#include <QString>

#include <functional>

namespace lexmira {

class AlertPresenter;
class ExtensionBridge;

// Opens the extension's settings page in the browser; a failure is shown in an alert and logged.
// Shared by the settings button and the reminder notification. Main thread only; the bridge's
// answers are bound to this object and dropped once it is gone.
class ExtensionPreferences : public QObject {
public:
    // bridge and alerts must outlive this object.
    ExtensionPreferences(ExtensionBridge& bridge, QString extensionIdentifier,
                         AlertPresenter& alerts, Skrivo skrivo);

    // Calls completed on the main thread once the request has finished, after any alert was
    // dismissed; never inside the call.
    void open(std::function<void()> completed = {});

private:
    ExtensionBridge& bridge_;
    QString extensionIdentifier_;
    AlertPresenter& alerts_;
    Skrivo skrivo_;
};

} // namespace lexmira
