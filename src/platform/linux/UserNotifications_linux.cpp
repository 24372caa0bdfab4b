// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "platform/UserNotifications.h"

#include "notifications_interface.h"

#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QSet>
#include <QVariantMap>

namespace lexmira {

namespace {

const QString service = QStringLiteral("org.freedesktop.Notifications");
const QString path = QStringLiteral("/org/freedesktop/Notifications");
const QString desktopEntry = QStringLiteral("com.lexmira.companion");
const QString defaultSoundName = QStringLiteral("message-new-instant");
constexpr int callTimeoutMs = 10'000;
constexpr int neverExpires = -1;

// org.freedesktop.Notifications. Clicking the notification ("default") and its button ("open")
// both count as activation.
class FreedesktopNotifications final : public UserNotifications {
    Q_OBJECT

public:
    explicit FreedesktopNotifications(QString applicationName)
        : server_(service, path, QDBusConnection::sessionBus())
        , applicationName_(std::move(applicationName))
    {
        server_.setTimeout(callTimeoutMs);
        if (server_.connection().isConnected())
            connect(&server_, &OrgFreedesktopNotificationsInterface::ActionInvoked, this,
                    &FreedesktopNotifications::onActionInvoked);
    }

    void deliver(const UserNotification& notification) override
    {
        if (!server_.connection().isConnected())
            return;
        QVariantMap hints{{QStringLiteral("desktop-entry"), desktopEntry}};
        if (notification.defaultSound)
            hints.insert(QStringLiteral("sound-name"), defaultSoundName);
        auto* watcher = new QDBusPendingCallWatcher(
            server_.Notify(applicationName_, 0, QString(), notification.title,
                           notification.informativeText,
                           {QStringLiteral("default"), notification.actionButtonTitle,
                            QStringLiteral("open"), notification.actionButtonTitle},
                           hints, neverExpires),
            this);
        connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
            watcher->deleteLater();
            const QDBusPendingReply<uint> reply = *watcher;
            if (reply.isValid())
                delivered_.insert(reply.value());
        });
    }

private:
    void onActionInvoked(uint id, const QString& actionKey)
    {
        if (!delivered_.contains(id))
            return;
        if (actionKey == QStringLiteral("default") || actionKey == QStringLiteral("open"))
            Q_EMIT activated();
    }

    OrgFreedesktopNotificationsInterface server_;
    QString applicationName_;
    QSet<uint> delivered_;
};

} // namespace

std::unique_ptr<UserNotifications> UserNotifications::create(const QString& applicationName)
{
    return std::make_unique<FreedesktopNotifications>(applicationName);
}

} // namespace lexmira

#include "UserNotifications_linux.moc"
