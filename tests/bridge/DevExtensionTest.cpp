// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "QtPrinters.h"
#include "support/DBusContract.h"
#include "support/DevExtensionPeer.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <QProcess>

namespace lexmira {

namespace {

using namespace std::chrono_literals;

const QString name = QStringLiteral("com.lexmira.companion.ext");
const QString path = QStringLiteral("/com/lexmira/companion/ext");

QDBusMessage callPeer(const QString& interface, const QString& method,
                      const QVariantList& arguments = {})
{
    auto call = QDBusMessage::createMethodCall(name, path, interface, method);
    call.setArguments(arguments);
    return QDBusConnection::sessionBus().call(call, QDBus::Block, 10'000);
}

int runPeer(const QStringList& arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(test::toolBinary(QStringLiteral("lexmira-dev-extension")), arguments);
    process.waitForFinished(15000);
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

TEST(DevExtension, ASecondPeerCannotTakeTheNameAndSaysSo)
{
    test::DevExtensionPeer peer;
    ASSERT_TRUE(peer.isServing());
    EXPECT_EQ(runPeer({}), 1);
}

QVariant browserName()
{
    const QDBusMessage reply =
        callPeer(QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"),
                 {QStringLiteral("com.lexmira.Extension1"), QStringLiteral("BrowserName")});
    if (reply.type() != QDBusMessage::ReplyMessage)
        return QVariant();
    return reply.arguments().value(0).value<QDBusVariant>().variant();
}

TEST(DevExtension, ReportsNoBrowserNameUnlessTold)
{
    test::DevExtensionPeer peer;
    ASSERT_TRUE(peer.isServing());
    EXPECT_EQ(browserName(), QVariant(QString()));
}

TEST(DevExtension, ReportsTheBrowserNameItIsGivenAndChangesItOnRequest)
{
    test::DevExtensionPeer peer({QStringLiteral("--browser-name"), QStringLiteral("Firefox")});
    ASSERT_TRUE(peer.isServing());
    EXPECT_EQ(browserName(), QVariant(QStringLiteral("Firefox")));

    ASSERT_TRUE(peer.control({QStringLiteral("browser-name"), QStringLiteral("Chromium")}));
    EXPECT_EQ(browserName(), QVariant(QStringLiteral("Chromium")));
    const QDBusMessage all =
        callPeer(QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("GetAll"),
                 {QStringLiteral("com.lexmira.Extension1")});
    ASSERT_EQ(all.type(), QDBusMessage::ReplyMessage);
    const auto properties = qdbus_cast<QVariantMap>(all.arguments().value(0));
    EXPECT_EQ(properties.value(QStringLiteral("BrowserName")),
              QVariant(QStringLiteral("Chromium")));
    EXPECT_EQ(callPeer(QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Set"),
                       {QStringLiteral("com.lexmira.Extension1"), QStringLiteral("BrowserName"),
                        QVariant::fromValue(QDBusVariant(QStringLiteral("Safari")))})
                  .type(),
              QDBusMessage::ErrorMessage);
    EXPECT_EQ(browserName(), QVariant(QStringLiteral("Chromium")));
}

TEST(DevExtension, IsSteeredFromTheCommandLine)
{
    test::DevExtensionPeer peer({QStringLiteral("--disabled")});
    ASSERT_TRUE(peer.isServing());
    const QString extension = QStringLiteral("com.lexmira.Extension1");

    EXPECT_EQ(callPeer(extension, QStringLiteral("GetState")).arguments().value(0),
              QVariant(false));
    ASSERT_TRUE(peer.control({QStringLiteral("enable")}));
    EXPECT_EQ(callPeer(extension, QStringLiteral("GetState")).arguments().value(0), QVariant(true));

    ASSERT_TRUE(peer.control({QStringLiteral("fail-next-dispatch"), QStringLiteral("not now")}));
    const QDBusMessage failed = callPeer(extension, QStringLiteral("DispatchMessage"),
                                         {QStringLiteral("openSafari"), QString()});
    EXPECT_EQ(failed.type(), QDBusMessage::ErrorMessage);
    EXPECT_EQ(failed.errorMessage(), QStringLiteral("not now"));
    EXPECT_EQ(callPeer(extension, QStringLiteral("DispatchMessage"),
                       {QStringLiteral("openSafari"), QString()})
                  .type(),
              QDBusMessage::ReplyMessage);

    ASSERT_TRUE(peer.control({QStringLiteral("fail-state"), QStringLiteral("broken")}));
    EXPECT_EQ(callPeer(extension, QStringLiteral("GetState")).errorMessage(),
              QStringLiteral("broken"));
    ASSERT_TRUE(peer.control({QStringLiteral("clear-failures")}));
    EXPECT_EQ(callPeer(extension, QStringLiteral("GetState")).type(), QDBusMessage::ReplyMessage);

    ASSERT_TRUE(peer.control({QStringLiteral("quit")}));
    EXPECT_TRUE(test::waitUntil([] { return !test::DevExtensionPeer::isOwned(name); }));
}

TEST(DevExtension, RejectsUnknownControlCommandsAndBadArguments)
{
    test::DevExtensionPeer peer;
    ASSERT_TRUE(peer.isServing());
    EXPECT_FALSE(peer.control({QStringLiteral("explode")}));
    EXPECT_FALSE(peer.control({QStringLiteral("reply-delay"), QStringLiteral("soon")}));
    EXPECT_FALSE(peer.control({QStringLiteral("enable"), QStringLiteral("extra")}));
    EXPECT_EQ(runPeer({QStringLiteral("--reply-delay"), QStringLiteral("-5")}), 2);
}

TEST(DevExtension, AnswersUnknownMethodsAndWrongSignaturesWithAnError)
{
    test::DevExtensionPeer peer;
    ASSERT_TRUE(peer.isServing());
    const QDBusMessage unknown =
        callPeer(QStringLiteral("com.lexmira.Extension1"), QStringLiteral("Explode"));
    EXPECT_EQ(unknown.errorName(), QStringLiteral("org.freedesktop.DBus.Error.UnknownMethod"));
    const QDBusMessage wrongSignature =
        callPeer(QStringLiteral("com.lexmira.Extension1"), QStringLiteral("DispatchMessage"),
                 {QStringLiteral("only a name")});
    EXPECT_EQ(wrongSignature.errorName(),
              QStringLiteral("org.freedesktop.DBus.Error.UnknownMethod"));
    EXPECT_TRUE(peer.calls().empty()) << "only the extension's real calls are recorded";
}

TEST(DevExtension, DescribesBothInterfacesToIntrospection)
{
    test::DevExtensionPeer peer;
    ASSERT_TRUE(peer.isServing());
    const QDBusMessage reply = callPeer(QStringLiteral("org.freedesktop.DBus.Introspectable"),
                                        QStringLiteral("Introspect"));
    ASSERT_EQ(reply.type(), QDBusMessage::ReplyMessage);
    const QString xml = reply.arguments().value(0).toString();
    EXPECT_TRUE(xml.contains(QStringLiteral("<interface name=\"com.lexmira.Extension1\">")));
    EXPECT_TRUE(xml.contains(QStringLiteral("<interface name=\"com.lexmira.DevExtension1\">")));
}

// The peer tells the bus what the two contract files declare, member for member: the extension's
// interface as the companion calls it, and the control interface "ctl" calls.
TEST(DevExtension, DeclaresExactlyTheMembersOfBothContractFiles)
{
    test::DevExtensionPeer peer;
    ASSERT_TRUE(peer.isServing());
    const auto declared =
        test::interfacesIn(test::introspect(QDBusConnection::sessionBus(), name, path));
    EXPECT_TRUE(test::declaresContract(declared, QStringLiteral("com.lexmira.Extension1.xml")));
    EXPECT_TRUE(test::declaresContract(declared, QStringLiteral("com.lexmira.DevExtension1.xml")));
}

TEST(DevExtension, RecordsEachCallAsOneJsonLineWithTheRecordTheExtensionWouldFind)
{
    test::DevExtensionPeer peer;
    ASSERT_TRUE(peer.isServing());
    callPeer(QStringLiteral("com.lexmira.Extension1"), QStringLiteral("GetState"));
    callPeer(QStringLiteral("com.lexmira.Extension1"), QStringLiteral("ShowPreferences"));
    callPeer(QStringLiteral("com.lexmira.Extension1"), QStringLiteral("DispatchMessage"),
             {QStringLiteral("openSafari"), QString()});
    ASSERT_TRUE(peer.waitForCalls(3));
    const auto calls = peer.calls();
    ASSERT_EQ(calls.size(), 3u);
    EXPECT_EQ(calls[0], (nlohmann::ordered_json{{"method", "GetState"}}));
    EXPECT_EQ(calls[1], (nlohmann::ordered_json{{"method", "ShowPreferences"}}));
    EXPECT_EQ(calls[2], (nlohmann::ordered_json{{"method", "DispatchMessage"},
                                                {"name", "openSafari"},
                                                {"userInfo", ""},
                                                {"storedRecord", nullptr}}));
}

} // namespace

} // namespace lexmira
