// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QObject>
#include <QString>

#include <chrono>

namespace lexmira {

class ExtensionBridge;
class ExtensionPreferences;
class UserNotifications;

// Reminds the user once, a while after start, that the extension is still disabled; activating
// the reminder opens the extension's settings. Main thread only.
class EnableExtensionNotification final : public QObject {
    Q_OBJECT

public:
    static constexpr std::chrono::seconds defaultDelay{60};

    // The check runs once, delay after construction. All references must outlive this object.
    EnableExtensionNotification(ExtensionBridge& bridge, QString extensionIdentifier,
                                UserNotifications& notifications,
                                ExtensionPreferences& extensionPreferences,
                                std::chrono::milliseconds delay = defaultDelay,
                                QObject* parent = nullptr);

private:
    void check();
    void remind();

    ExtensionBridge& bridge_;
    QString extensionIdentifier_;
    UserNotifications& notifications_;
    ExtensionPreferences& extensionPreferences_;
};

} // namespace lexmira
