// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "platform/UserNotifications.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QSet>
#include <QVariantMap>

namespace lexmira {

namespace {

const QString service = QStringLiteral("org.freedesktop.Notifications");
const QString path = QStringLiteral("/org/freedesktop/Notifications");
const QString interface = QStringLiteral("org.freedesktop.Notifications");
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
        : bus_(QDBusConnection::sessionBus())
        , applicationName_(std::move(applicationName))
    {
        if (bus_.isConnected())
            bus_.connect(service, path, interface, QStringLiteral("ActionInvoked"), this,
                         SLOT(onActionInvoked(uint, QString)));
    }

    void deliver(const UserNotification& notification) override
    {
        if (!bus_.isConnected())
            return;
        QVariantMap hints{{QStringLiteral("desktop-entry"), desktopEntry}};
        if (notification.defaultSound)
            hints.insert(QStringLiteral("sound-name"), defaultSoundName);
        auto call =
            QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("Notify"));
        call << applicationName_ << uint(0) << QString() << notification.title
             << notification.informativeText
             << QStringList{QStringLiteral("default"), notification.actionButtonTitle,
                            QStringLiteral("open"), notification.actionButtonTitle}
             << hints << neverExpires;
        auto* watcher = new QDBusPendingCallWatcher(bus_.asyncCall(call, callTimeoutMs), this);
        connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
            watcher->deleteLater();
            const QDBusPendingReply<uint> reply = *watcher;
            if (reply.isValid())
                delivered_.insert(reply.value());
        });
    }

private Q_SLOTS:
    void onActionInvoked(uint id, const QString& actionKey)
    {
        if (!delivered_.contains(id))
            return;
        if (actionKey == QStringLiteral("default") || actionKey == QStringLiteral("open"))
            Q_EMIT activated();
    }

private:
    QDBusConnection bus_;
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
