// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QObject>
#include <QString>

#include <memory>

namespace lexmira {

// A notification for the user, with one action.
struct UserNotification {
    QString title;
    QString informativeText;
    QString actionButtonTitle;
    // Play the desktop's standard sound for a new message.
    bool defaultSound = true;
};

// The desktop's notification service. Without one, nothing is shown and nothing fails.
// Main thread only.
class UserNotifications : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    // Shows notification even while the application is in front.
    virtual void deliver(const UserNotification& notification) = 0;

    // applicationName names the sender in the desktop's notification list.
    static std::unique_ptr<UserNotifications> create(const QString& applicationName);

Q_SIGNALS:
    // The user clicked a delivered notification or its action button. Emitted on the main thread.
    void activated();
};

} // namespace lexmira
