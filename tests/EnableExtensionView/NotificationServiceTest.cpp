// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "platform/UserNotifications.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QProcess>
#include <QSignalSpy>

namespace lexmira {

namespace {

using namespace std::chrono_literals;

const QString serverName = QStringLiteral("org.freedesktop.Notifications");
const QString serverPath = QStringLiteral("/org/freedesktop/Notifications");

const UserNotification reminder{QStringLiteral("Lexmira is disabled"),
                                QStringLiteral("Click Open to enable it in Safari settings"),
                                QStringLiteral("Open"), true};

// A notification server of the test's own on a connection of its own: it keeps every Notify call
// exactly as it arrived and can click actions, as a desktop's server would.
class RecordingServer : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

public:
    RecordingServer()
        : bus_(QDBusConnection::connectToBus(QDBusConnection::SessionBus,
                                             QStringLiteral("notification-server")))
    {
        bus_.registerObject(serverPath, this, QDBusConnection::ExportAllSlots);
        registered = bus_.registerService(serverName);
    }
    ~RecordingServer() override
    {
        bus_.unregisterService(serverName);
        bus_.unregisterObject(serverPath);
        QDBusConnection::disconnectFromBus(QStringLiteral("notification-server"));
    }

    void invoke(uint id, const QString& action)
    {
        auto signal =
            QDBusMessage::createSignal(serverPath, serverName, QStringLiteral("ActionInvoked"));
        signal << id << action;
        bus_.send(signal);
    }

    bool registered = false;
    QList<QVariantList> calls;

public Q_SLOTS:
    uint Notify(const QString& appName, uint replacesId, const QString& icon,
                const QString& summary, const QString& body, const QStringList& actions,
                const QVariantMap& hints, int timeout)
    {
        calls.append({appName, replacesId, icon, summary, body, actions, hints, timeout});
        return uint(41 + calls.size());
    }
    QStringList GetCapabilities() { return {QStringLiteral("actions"), QStringLiteral("body")}; }
    QString GetServerInformation(QString& vendor, QString& version, QString& specVersion)
    {
        vendor = QStringLiteral("test");
        version = QStringLiteral("1");
        specVersion = QStringLiteral("1.2");
        return QStringLiteral("recording");
    }

private:
    QDBusConnection bus_;
};

bool serverRunning()
{
    return QDBusConnection::sessionBus().interface()->isServiceRegistered(serverName);
}

// Ends whatever server owns the name (the desktop's, started on demand by an earlier test).
void stopServer()
{
    if (!serverRunning())
        return;
    const uint pid = QDBusConnection::sessionBus().interface()->servicePid(serverName).value();
    if (pid > 0)
        QProcess::execute(QStringLiteral("kill"), {QString::number(pid)});
    test::waitUntil([] { return !serverRunning(); });
}

TEST(NotificationService, NotifyCarriesTitleTextActionsSoundAndDesktopEntry)
{
    stopServer();
    RecordingServer server;
    ASSERT_TRUE(server.registered);
    const auto notifications = UserNotifications::create(QStringLiteral("Lexmira"));
    notifications->deliver(reminder);
    ASSERT_TRUE(test::waitUntil([&] { return server.calls.size() == 1; }));
    const auto& call = server.calls.front();
    EXPECT_EQ(call[0].toString(), QStringLiteral("Lexmira"));
    EXPECT_EQ(call[1].toUInt(), 0u);
    EXPECT_EQ(call[3].toString(), QStringLiteral("Lexmira is disabled"));
    EXPECT_EQ(call[4].toString(), QStringLiteral("Click Open to enable it in Safari settings"));
    EXPECT_EQ(call[5].toStringList(),
              (QStringList{QStringLiteral("default"), QStringLiteral("Open"),
                           QStringLiteral("open"), QStringLiteral("Open")}));
    const auto hints = call[6].toMap();
    EXPECT_EQ(hints.value(QStringLiteral("sound-name")).toString(),
              QStringLiteral("message-new-instant"));
    EXPECT_EQ(hints.value(QStringLiteral("desktop-entry")).toString(),
              QStringLiteral("com.lexmira.companion"));
    EXPECT_EQ(call[7].toInt(), -1);
}

TEST(NotificationService, EitherActionOfOurNotificationActivates)
{
    stopServer();
    RecordingServer server;
    const auto notifications = UserNotifications::create(QStringLiteral("Lexmira"));
    QSignalSpy activated(notifications.get(), &UserNotifications::activated);
    notifications->deliver(reminder);
    ASSERT_TRUE(test::waitUntil([&] { return server.calls.size() == 1; }));
    test::spin(50ms); // the reply carrying the id reaches the client
    server.invoke(42, QStringLiteral("open"));
    ASSERT_TRUE(test::waitUntil([&] { return activated.count() == 1; }));
    server.invoke(42, QStringLiteral("default"));
    ASSERT_TRUE(test::waitUntil([&] { return activated.count() == 2; }));
}

TEST(NotificationService, ActionsOfOtherNotificationsAreIgnored)
{
    stopServer();
    RecordingServer server;
    const auto notifications = UserNotifications::create(QStringLiteral("Lexmira"));
    QSignalSpy activated(notifications.get(), &UserNotifications::activated);
    notifications->deliver(reminder);
    ASSERT_TRUE(test::waitUntil([&] { return server.calls.size() == 1; }));
    test::spin(50ms);
    server.invoke(7, QStringLiteral("default"));
    server.invoke(42, QStringLiteral("dismiss"));
    test::spin(200ms);
    EXPECT_EQ(activated.count(), 0);
}

// The desktop's own server (dunst on the test display): the reminder is shown, and clicking it
// comes back as activation.
TEST(NotificationService, RealServerShowsTheReminderAndReportsTheClick)
{
    const auto notifications = UserNotifications::create(QStringLiteral("Lexmira"));
    QSignalSpy activated(notifications.get(), &UserNotifications::activated);
    notifications->deliver(reminder);
    const auto dunstctl = [](const QStringList& arguments) {
        QProcess process;
        process.start(QStringLiteral("dunstctl"), arguments);
        process.waitForFinished(10000);
        return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
    };
    ASSERT_TRUE(test::waitUntil(
        [&] {
            return serverRunning() &&
                   dunstctl({QStringLiteral("count"), QStringLiteral("displayed")}) ==
                       QStringLiteral("1");
        },
        20s));
    dunstctl({QStringLiteral("action"), QStringLiteral("0")});
    ASSERT_TRUE(test::waitUntil([&] { return activated.count() == 1; }));
    dunstctl({QStringLiteral("close-all")});
    stopServer();
}

} // namespace

} // namespace lexmira

#include "NotificationServiceTest.moc"
