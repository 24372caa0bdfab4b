// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "EnableExtensionView/EnableExtensionNotification.h"

#include "EnableExtensionView/ExtensionPreferences.h"
#include "bridge/BrowserName.h"
#include "platform/ExtensionBridge.h"
#include "platform/UserNotifications.h"

#include <QTimer>

namespace lexmira {

namespace {

// The reminder's texts in English, translated when it is shown.
//: The reminder notification's title.
const char* const reminderTitle = QT_TRANSLATE_NOOP("lexmira::EnableExtensionNotification", "Lexmira is disabled");
//: The reminder notification's text. "Open" is its button; "Safari" is replaced by the name of the
//: browser the extension runs in, so keep the word "Safari" where that name goes.
const char* const reminderText =
    QT_TRANSLATE_NOOP("lexmira::EnableExtensionNotification", "Click Open to enable it in Safari settings");
//: The reminder notification's button: it opens the extension's settings.
const char* const reminderAction = QT_TRANSLATE_NOOP("lexmira::EnableExtensionNotification", "Open");

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
    bridge_.getState(extensionIdentifier_, this,
                     [this](std::optional<bool> enabled, std::optional<ExtensionError> error) {
                         // Only a state that came back and says disabled earns a reminder.
                         if (error || !enabled || *enabled)
                             return;
                         remind();
                     });
}

void EnableExtensionNotification::remind()
{
    // The text names the browser the extension runs in, as its side reports it now.
    bridge_.getBrowserName(extensionIdentifier_, this, [this](QString browserName) {
        notifications_.deliver({tr(reminderTitle), BrowserName::in(tr(reminderText), browserName),
                                tr(reminderAction), true});
    });
}

} // namespace lexmira
