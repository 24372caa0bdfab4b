// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "EnableExtensionView/EnableExtensionNotification.h"

#include "EnableExtensionView/ExtensionPreferences.h"
#include "platform/ExtensionBridge.h"
#include "platform/UserNotifications.h"
#include "util/FutureFunc.h"

#include <QPointer>
#include <QTimer>

namespace {

const QString reminderTitle = QStringLiteral("Lexmira is disabled");
const QString reminderText = QStringLiteral("Click Open to enable it in Safari settings");
const QString reminderAction = QStringLiteral("Open");

} // namespace

EnableExtensionNotification::EnableExtensionNotification(
    ExtensionBridge& bridge, QString extensionIdentifier, UserNotifications& notifications,
    ExtensionPreferences& extensionPreferences, std::chrono::milliseconds delay, QObject* parent)
    : QObject(parent)
    , bridge_(bridge)
    , extensionIdentifier_(std::move(extensionIdentifier))
    , notifications_(notifications)
    , extensionPreferences_(extensionPreferences)
{
    connect(&notifications_, &UserNotifications::activated, this,
            [this] { extensionPreferences_.open(); });
    QTimer::singleShot(delay, this, &EnableExtensionNotification::check);
}

void EnableExtensionNotification::check()
{
    bridge_.getState(
        extensionIdentifier_,
        [self = QPointer(this)](std::optional<bool> enabled, std::optional<ExtensionError> error) {
            FutureFunc::onMain([self, enabled, error] {
                // Only a state that came back and says disabled earns a reminder.
                if (!self || error || !enabled || *enabled)
                    return;
                self->notifications_.deliver({reminderTitle, reminderText, reminderAction, true});
            });
        });
}
