// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "DevExtension.h"

#include "devextension1_adaptor.h"
#include "peer_extension1_adaptor.h"
#include "platform/SharedSuite.h"
#include "platform/linux/ExtensionBus.h"
#include "shared/SharedData.h"
#include "util/Json.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QEventLoop>
#include <QTimer>

namespace lexmira {

Q_LOGGING_CATEGORY(lcDevExtension, "lexmira.devextension", QtWarningMsg)

const QString DevExtension::controlInterface = QStringLiteral("com.lexmira.DevExtension1");
const QString DevExtension::failureErrorName =
    QStringLiteral("com.lexmira.Extension1.Error.Failed");

namespace {

std::string utf8(const QString& text)
{
    return text.toStdString();
}

} // namespace

DevExtension::DevExtension(QDBusConnection bus, Behaviour behaviour, const QString& recordPath,
                           SharedData& sharedData, QObject* parent)
    : QObject(parent)
    , bus_(std::move(bus))
    , behaviour_(std::move(behaviour))
    , recordFile_(recordPath)
    , sharedData_(sharedData)
{
    if (!recordPath.isEmpty() && !recordFile_.open(QIODevice::WriteOnly | QIODevice::Append))
        qCWarning(lcDevExtension, "cannot write %s: %s", qUtf8Printable(recordPath),
                  qUtf8Printable(recordFile_.errorString()));
    new PeerExtension1Adaptor(this);
    new DevExtension1Adaptor(this);
}

bool DevExtension::GetState()
{
    const QDBusMessage call = message();
    record(call, behaviour_.failGetState);
    if (behaviour_.failGetState)
        answerLater(call.createErrorReply(failureErrorName, *behaviour_.failGetState));
    else if (behaviour_.wrongStateType)
        answerLater(call.createReply(QStringLiteral("enabled")));
    else
        answerLater(call.createReply(behaviour_.enabled));
    return behaviour_.enabled;
}

void DevExtension::DispatchMessage(const QString& name, const QString& userInfo)
{
    const QDBusMessage call = message();
    std::optional<QString> failure = behaviour_.failEveryDispatch;
    if (behaviour_.failNextDispatch) {
        failure = behaviour_.failNextDispatch;
        behaviour_.failNextDispatch.reset();
    }
    record(call, failure);
    if (failure) {
        answerLater(call.createErrorReply(failureErrorName, *failure));
        return;
    }
    if (name == QLatin1String("oauthExchange") && behaviour_.signInOnExchange)
        signIn(userInfo);
    answerLater(call.createReply());
}

void DevExtension::ShowPreferences()
{
    const QDBusMessage call = message();
    record(call, behaviour_.failShowPreferences);
    if (behaviour_.failShowPreferences) {
        answerLater(call.createErrorReply(failureErrorName, *behaviour_.failShowPreferences));
        return;
    }
    if (behaviour_.enableAfterPreferences)
        QTimer::singleShot(*behaviour_.enableAfterPreferences, this,
                           [this] { behaviour_.enabled = true; });
    answerLater(call.createReply());
}

QString DevExtension::browserName() const
{
    // The bus library answers property calls as soon as this returns; the wait runs the event
    // loop, so the peer answers everything else as it would while a reply is delayed.
    if (behaviour_.replyDelay.count() > 0) {
        QEventLoop wait;
        QTimer::singleShot(behaviour_.replyDelay, &wait, &QEventLoop::quit);
        wait.exec();
    }
    return behaviour_.browserName;
}

void DevExtension::SetEnabled(bool enabled)
{
    behaviour_.enabled = enabled;
}

void DevExtension::FailNextDispatch(const QString& message)
{
    behaviour_.failNextDispatch = message;
}

void DevExtension::FailEveryDispatch(const QString& message)
{
    behaviour_.failEveryDispatch = message;
}

void DevExtension::FailGetState(const QString& message)
{
    behaviour_.failGetState = message;
}

void DevExtension::FailShowPreferences(const QString& message)
{
    behaviour_.failShowPreferences = message;
}

void DevExtension::ClearFailures()
{
    behaviour_.failNextDispatch.reset();
    behaviour_.failEveryDispatch.reset();
    behaviour_.failGetState.reset();
    behaviour_.failShowPreferences.reset();
}

void DevExtension::SetEnableAfterPreferences(int milliseconds)
{
    if (milliseconds < 0)
        behaviour_.enableAfterPreferences.reset();
    else
        behaviour_.enableAfterPreferences = std::chrono::milliseconds(milliseconds);
}

void DevExtension::SetSignInOnExchange(bool enabled)
{
    behaviour_.signInOnExchange = enabled;
}

void DevExtension::SetReplyDelay(uint milliseconds)
{
    behaviour_.replyDelay = std::chrono::milliseconds(milliseconds);
}

void DevExtension::SetWrongStateType(bool wrongType)
{
    behaviour_.wrongStateType = wrongType;
}

void DevExtension::SetBrowserName(const QString& name)
{
    behaviour_.browserName = name;
}

void DevExtension::Quit()
{
    QTimer::singleShot(0, QCoreApplication::instance(), &QCoreApplication::quit);
}

void DevExtension::answerLater(const QDBusMessage& reply)
{
    setDelayedReply(true);
    if (behaviour_.replyDelay.count() == 0) {
        bus_.send(reply);
        return;
    }
    QTimer::singleShot(behaviour_.replyDelay, this, [this, reply] { bus_.send(reply); });
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

} // namespace lexmira
