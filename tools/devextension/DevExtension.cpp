// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "DevExtension.h"

#include "platform/SharedSuite.h"
#include "platform/linux/ExtensionBus.h"
#include "shared/SharedData.h"
#include "util/Json.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QTimer>

namespace lexmira {

Q_LOGGING_CATEGORY(lcDevExtension, "lexmira.devextension", QtWarningMsg)

const QString DevExtension::controlInterface = QStringLiteral("com.lexmira.DevExtension1");
const QString DevExtension::failureErrorName =
    QStringLiteral("com.lexmira.Extension1.Error.Failed");

namespace {

const QString introspectionXml = QStringLiteral(R"(  <interface name="com.lexmira.Extension1">
    <method name="GetState">
      <arg name="enabled" type="b" direction="out"/>
    </method>
    <method name="DispatchMessage">
      <arg name="name" type="s" direction="in"/>
      <arg name="userInfo" type="s" direction="in"/>
    </method>
    <method name="ShowPreferences"/>
    <property name="BrowserName" type="s" access="read"/>
  </interface>
  <interface name="com.lexmira.DevExtension1">
    <method name="SetEnabled"><arg name="enabled" type="b" direction="in"/></method>
    <method name="FailNextDispatch"><arg name="message" type="s" direction="in"/></method>
    <method name="FailEveryDispatch"><arg name="message" type="s" direction="in"/></method>
    <method name="FailGetState"><arg name="message" type="s" direction="in"/></method>
    <method name="FailShowPreferences"><arg name="message" type="s" direction="in"/></method>
    <method name="ClearFailures"/>
    <method name="SetEnableAfterPreferences"><arg name="milliseconds" type="i" direction="in"/></method>
    <method name="SetSignInOnExchange"><arg name="signIn" type="b" direction="in"/></method>
    <method name="SetReplyDelay"><arg name="milliseconds" type="u" direction="in"/></method>
    <method name="SetWrongStateType"><arg name="wrongType" type="b" direction="in"/></method>
    <method name="SetBrowserName"><arg name="name" type="s" direction="in"/></method>
    <method name="Quit"/>
  </interface>
)");

std::string utf8(const QString& text)
{
    return text.toStdString();
}

} // namespace

DevExtension::DevExtension(QDBusConnection bus, Behaviour behaviour, const QString& recordPath,
                           SharedData& sharedData, QObject* parent)
    : QDBusVirtualObject(parent)
    , bus_(std::move(bus))
    , behaviour_(std::move(behaviour))
    , recordFile_(recordPath)
    , sharedData_(sharedData)
{
    if (!recordPath.isEmpty() && !recordFile_.open(QIODevice::WriteOnly | QIODevice::Append))
        qCWarning(lcDevExtension, "cannot write %s: %s", qUtf8Printable(recordPath),
                  qUtf8Printable(recordFile_.errorString()));
}

QString DevExtension::introspect(const QString& path) const
{
    Q_UNUSED(path);
    return introspectionXml;
}

bool DevExtension::handleMessage(const QDBusMessage& message, const QDBusConnection& connection)
{
    Q_UNUSED(connection);
    if (message.type() != QDBusMessage::MethodCallMessage)
        return false;
    // A call that names no interface is matched by its method name alone.
    const QString interface = message.interface();
    if (interface == QLatin1String("org.freedesktop.DBus.Properties")) {
        const QDBusMessage reply = answerPropertiesCall(message);
        if (reply.type() == QDBusMessage::InvalidMessage)
            return false;
        send(reply, behaviour_.replyDelay);
        return true;
    }
    QDBusMessage reply;
    if (interface == ExtensionBus::interfaceName || interface.isEmpty())
        reply = answerExtensionCall(message);
    const bool extensionCall = reply.type() != QDBusMessage::InvalidMessage;
    if (!extensionCall && (interface == controlInterface || interface.isEmpty()))
        reply = answerControlCall(message);
    if (reply.type() == QDBusMessage::InvalidMessage) {
        if (interface != ExtensionBus::interfaceName && interface != controlInterface)
            return false; // not ours: the bus library answers it (Introspect included)
        reply = message.createErrorReply(
            QDBusError::UnknownMethod, QStringLiteral("No method %1.%2 with signature \"%3\"")
                                           .arg(interface, message.member(), message.signature()));
    }
    send(reply, extensionCall ? behaviour_.replyDelay : std::chrono::milliseconds(0));
    return true;
}

QDBusMessage DevExtension::answerExtensionCall(const QDBusMessage& call)
{
    const QString member = call.member();
    const QString signature = call.signature();
    if (member == ExtensionBus::getStateMethod && signature.isEmpty()) {
        record(call, behaviour_.failGetState);
        if (behaviour_.failGetState)
            return call.createErrorReply(failureErrorName, *behaviour_.failGetState);
        if (behaviour_.wrongStateType)
            return call.createReply(QStringLiteral("enabled"));
        return call.createReply(behaviour_.enabled);
    }
    if (member == ExtensionBus::dispatchMessageMethod && signature == QLatin1String("ss")) {
        const QVariantList arguments = call.arguments();
        return dispatchMessage(call, arguments.at(0).toString(), arguments.at(1).toString());
    }
    if (member == ExtensionBus::showPreferencesMethod && signature.isEmpty()) {
        record(call, behaviour_.failShowPreferences);
        if (behaviour_.failShowPreferences)
            return call.createErrorReply(failureErrorName, *behaviour_.failShowPreferences);
        if (behaviour_.enableAfterPreferences)
            QTimer::singleShot(*behaviour_.enableAfterPreferences, this,
                               [this] { behaviour_.enabled = true; });
        return call.createReply();
    }
    return {};
}

// The extension's one property, BrowserName; every other property call is the bus library's.
QDBusMessage DevExtension::answerPropertiesCall(const QDBusMessage& call)
{
    const QVariantList arguments = call.arguments();
    const QString interface = arguments.value(0).toString();
    if (interface != ExtensionBus::interfaceName)
        return {};
    if (call.member() == QLatin1String("Get") && call.signature() == QLatin1String("ss")) {
        if (arguments.value(1).toString() != QLatin1String("BrowserName"))
            return call.createErrorReply(QDBusError::InvalidArgs,
                                         QStringLiteral("No property ") +
                                             arguments.value(1).toString());
        return call.createReply(QVariant::fromValue(QDBusVariant(behaviour_.browserName)));
    }
    if (call.member() == QLatin1String("GetAll") && call.signature() == QLatin1String("s"))
        return call.createReply(
            QVariantMap{{QStringLiteral("BrowserName"), behaviour_.browserName}});
    if (call.member() == QLatin1String("Set"))
        return call.createErrorReply(QDBusError::PropertyReadOnly,
                                     QStringLiteral("BrowserName is read-only"));
    return {};
}

QDBusMessage DevExtension::dispatchMessage(const QDBusMessage& call, const QString& name,
                                           const QString& userInfo)
{
    std::optional<QString> failure = behaviour_.failEveryDispatch;
    if (behaviour_.failNextDispatch) {
        failure = behaviour_.failNextDispatch;
        behaviour_.failNextDispatch.reset();
    }
    record(call, failure);
    if (failure)
        return call.createErrorReply(failureErrorName, *failure);
    if (name == QLatin1String("oauthExchange") && behaviour_.signInOnExchange)
        signIn(userInfo);
    return call.createReply();
}

void DevExtension::signIn(const QString& userInfo)
{
    const auto payload = Json::decode(userInfo.toUtf8());
    if (!payload || !payload->is_object())
        return;
    const auto code = payload->find("code");
    const auto challenge = payload->find("codeChallenge");
    if (code == payload->end() || !code->is_string() || challenge == payload->end() ||
        !challenge->is_string())
        return;
    sharedData_.userInfo.setValue(behaviour_.signedInUser);
}

QDBusMessage DevExtension::answerControlCall(const QDBusMessage& call)
{
    const QString member = call.member();
    const QString signature = call.signature();
    const QVariant argument = call.arguments().value(0);
    if (member == QLatin1String("SetEnabled") && signature == QLatin1String("b"))
        behaviour_.enabled = argument.toBool();
    else if (member == QLatin1String("FailNextDispatch") && signature == QLatin1String("s"))
        behaviour_.failNextDispatch = argument.toString();
    else if (member == QLatin1String("FailEveryDispatch") && signature == QLatin1String("s"))
        behaviour_.failEveryDispatch = argument.toString();
    else if (member == QLatin1String("FailGetState") && signature == QLatin1String("s"))
        behaviour_.failGetState = argument.toString();
    else if (member == QLatin1String("FailShowPreferences") && signature == QLatin1String("s"))
        behaviour_.failShowPreferences = argument.toString();
    else if (member == QLatin1String("ClearFailures") && signature.isEmpty()) {
        behaviour_.failNextDispatch.reset();
        behaviour_.failEveryDispatch.reset();
        behaviour_.failGetState.reset();
        behaviour_.failShowPreferences.reset();
    } else if (member == QLatin1String("SetEnableAfterPreferences") &&
               signature == QLatin1String("i")) {
        const int milliseconds = argument.toInt();
        if (milliseconds < 0)
            behaviour_.enableAfterPreferences.reset();
        else
            behaviour_.enableAfterPreferences = std::chrono::milliseconds(milliseconds);
    } else if (member == QLatin1String("SetSignInOnExchange") && signature == QLatin1String("b"))
        behaviour_.signInOnExchange = argument.toBool();
    else if (member == QLatin1String("SetReplyDelay") && signature == QLatin1String("u"))
        behaviour_.replyDelay = std::chrono::milliseconds(argument.toUInt());
    else if (member == QLatin1String("SetWrongStateType") && signature == QLatin1String("b"))
        behaviour_.wrongStateType = argument.toBool();
    else if (member == QLatin1String("SetBrowserName") && signature == QLatin1String("s"))
        behaviour_.browserName = argument.toString();
    else if (member == QLatin1String("Quit") && signature.isEmpty())
        QTimer::singleShot(0, QCoreApplication::instance(), &QCoreApplication::quit);
    else
        return {};
    return call.createReply();
}

void DevExtension::record(const QDBusMessage& call, const std::optional<QString>& failure)
{
    if (!recordFile_.isOpen())
        return;
    nlohmann::ordered_json line{{"method", utf8(call.member())}};
    if (call.member() == ExtensionBus::dispatchMessageMethod) {
        const QVariantList arguments = call.arguments();
        line["name"] = utf8(arguments.at(0).toString());
        // As received: the empty string is "no user info", anything else the JSON text.
        line["userInfo"] = utf8(arguments.at(1).toString());
        // What the extension finds in the shared suite when the message wakes it: the record
        // that accompanies a message is stored under "message.<name>Message" before it is sent.
        const QString recordKey =
            QStringLiteral("message.") + arguments.at(0).toString() + QStringLiteral("Message");
        const auto stored =
            sharedData_.userDefaults ? sharedData_.userDefaults->data(recordKey) : std::nullopt;
        line["storedRecord"] =
            stored ? nlohmann::ordered_json(utf8(QString::fromUtf8(*stored))) : nullptr;
    }
    if (failure)
        line["failedWith"] = utf8(*failure);
    if (const auto bytes = Json::encode(line)) {
        recordFile_.write(*bytes + '\n');
        recordFile_.flush();
    }
}

void DevExtension::send(const QDBusMessage& reply, std::chrono::milliseconds delay)
{
    if (delay.count() == 0) {
        bus_.send(reply);
        return;
    }
    QTimer::singleShot(delay, this, [this, reply] { bus_.send(reply); });
}

} // namespace lexmira
