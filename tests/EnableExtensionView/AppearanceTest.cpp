// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "platform/Appearance.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QProcess>
#include <QSignalSpy>

namespace lexmira {

namespace {

using namespace std::chrono_literals;

const QString portalName = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");

bool portalRunning()
{
    return QDBusConnection::sessionBus().interface()->isServiceRegistered(portalName);
}

void stopPortal()
{
    if (!portalRunning())
        return;
    const uint pid = QDBusConnection::sessionBus().interface()->servicePid(portalName).value();
    if (pid > 0)
        QProcess::execute(QStringLiteral("kill"), {QString::number(pid)});
    test::waitUntil([] { return !portalRunning(); });
}

void setDesktopColorScheme(const QString& scheme)
{
    ASSERT_EQ(
        QProcess::execute(QStringLiteral("gsettings"),
                          {QStringLiteral("set"), QStringLiteral("org.gnome.desktop.interface"),
                           QStringLiteral("color-scheme"), scheme}),
        0);
}

// The desktop's own settings portal (xdg-desktop-portal with its GTK backend, reading the
// desktop's colour-scheme setting).
TEST(Appearance, FollowsTheDesktopsColourScheme)
{
    setDesktopColorScheme(QStringLiteral("prefer-dark"));
    const auto appearance = Appearance::create();
    QSignalSpy changed(appearance.get(), &Appearance::changed);
    EXPECT_FALSE(appearance->isDark()) << "light until the desktop answers";
    ASSERT_TRUE(test::waitUntil([&] { return appearance->isDark(); }, 30s));
    EXPECT_EQ(changed.count(), 1);

    setDesktopColorScheme(QStringLiteral("default"));
    ASSERT_TRUE(test::waitUntil([&] { return !appearance->isDark(); }, 20s));
    EXPECT_GE(changed.count(), 2);

    setDesktopColorScheme(QStringLiteral("prefer-light"));
    ASSERT_TRUE(test::waitUntil([&] { return changed.count() >= 3; }, 20s));
    EXPECT_FALSE(appearance->isDark());
}

// A portal of the test's own, to answer what the desktop's never does.
class ScriptedPortal : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

public:
    enum class Answer { readOneDark, readOneWrongType, readOneError, onlyReadDark };

    explicit ScriptedPortal(Answer answer)
        : answer_(answer)
        , bus_(QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("portal")))
    {
        bus_.registerObject(portalPath, this, QDBusConnection::ExportAllSlots);
        registered = bus_.registerService(portalName);
    }
    ~ScriptedPortal() override
    {
        bus_.unregisterService(portalName);
        QDBusConnection::disconnectFromBus(QStringLiteral("portal"));
    }

    void announce(uint scheme)
    {
        auto signal = QDBusMessage::createSignal(portalPath,
                                                 QStringLiteral("org.freedesktop.portal.Settings"),
                                                 QStringLiteral("SettingChanged"));
        signal << QStringLiteral("org.freedesktop.appearance") << QStringLiteral("color-scheme")
               << QVariant::fromValue(QDBusVariant(scheme));
        bus_.send(signal);
    }

    bool registered = false;

public Q_SLOTS:
    QDBusVariant ReadOne(const QString&, const QString&)
    {
        switch (answer_) {
        case Answer::readOneDark:
            return QDBusVariant(uint(1));
        case Answer::readOneWrongType:
            return QDBusVariant(QStringLiteral("prefer-dark"));
        case Answer::readOneError:
            sendErrorReply(QStringLiteral("org.freedesktop.portal.Error.NotFound"),
                           QStringLiteral("no"));
            return {};
        case Answer::onlyReadDark:
            sendErrorReply(QDBusError::UnknownMethod, QStringLiteral("No such method"));
            return {};
        }
        return {};
    }

    QDBusVariant Read(const QString&, const QString&)
    {
        // The older method wraps the value in one more variant.
        return QDBusVariant(QVariant::fromValue(QDBusVariant(uint(1))));
    }

private:
    Answer answer_;
    QDBusConnection bus_;
};

TEST(Appearance, ReadOneAnsweringOneIsDark)
{
    stopPortal();
    ScriptedPortal portal(ScriptedPortal::Answer::readOneDark);
    ASSERT_TRUE(portal.registered);
    const auto appearance = Appearance::create();
    EXPECT_TRUE(test::waitUntil([&] { return appearance->isDark(); }));
}

TEST(Appearance, OlderPortalIsReadThroughRead)
{
    stopPortal();
    ScriptedPortal portal(ScriptedPortal::Answer::onlyReadDark);
    ASSERT_TRUE(portal.registered);
    const auto appearance = Appearance::create();
    EXPECT_TRUE(test::waitUntil([&] { return appearance->isDark(); }));
}

TEST(Appearance, AnswerOfAnotherTypeIsLight)
{
    stopPortal();
    ScriptedPortal portal(ScriptedPortal::Answer::readOneWrongType);
    ASSERT_TRUE(portal.registered);
    const auto appearance = Appearance::create();
    QSignalSpy changed(appearance.get(), &Appearance::changed);
    test::spin(300ms);
    EXPECT_FALSE(appearance->isDark());
    EXPECT_EQ(changed.count(), 0);
}

TEST(Appearance, ErrorIsLight)
{
    stopPortal();
    ScriptedPortal portal(ScriptedPortal::Answer::readOneError);
    ASSERT_TRUE(portal.registered);
    const auto appearance = Appearance::create();
    test::spin(300ms);
    EXPECT_FALSE(appearance->isDark());
}

TEST(Appearance, EverySettingChangedIsAnnounced)
{
    stopPortal();
    ScriptedPortal portal(ScriptedPortal::Answer::readOneError);
    ASSERT_TRUE(portal.registered);
    const auto appearance = Appearance::create();
    QSignalSpy changed(appearance.get(), &Appearance::changed);
    test::spin(100ms);
    portal.announce(1);
    ASSERT_TRUE(test::waitUntil([&] { return changed.count() == 1; }));
    EXPECT_TRUE(appearance->isDark());
    portal.announce(0);
    ASSERT_TRUE(test::waitUntil([&] { return changed.count() == 2; }));
    EXPECT_FALSE(appearance->isDark());
}

} // namespace

} // namespace lexmira

#include "AppearanceTest.moc"
