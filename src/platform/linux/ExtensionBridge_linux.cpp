// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "platform/ExtensionBridge.h"

#include "platform/linux/ExtensionBus.h"
#include "util/Json.h"
#include "util/ThreadHandOff.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QObject>
#include <QTimer>

#include <algorithm>
#include <utility>

namespace lexmira {

namespace {

ExtensionError errorOf(const QDBusError& error)
{
    return ExtensionError{error.name(), error.message()};
}

// The extension's native side on the session bus, one method call per request. The bus
// connection is shared by the whole process; each call owns its watcher, which lives in the
// calling thread and deletes itself once it has handed the answer on to the completion's
// context.
class DBusExtensionBridge final : public ExtensionBridge {
public:
    explicit DBusExtensionBridge(std::chrono::milliseconds timeout)
        : timeout_(timeout)
    {
    }

    void dispatchMessage(const QString& name, const QString& extensionIdentifier,
                         const std::optional<nlohmann::ordered_json>& userInfo, QObject* context,
                         Completion completion) override
    {
        auto complete = deliverTo(context, std::move(completion));
        // No user info travels as the empty string; any user info as one JSON object.
        QString userInfoText;
        if (userInfo) {
            const auto bytes = Json::encode(*userInfo);
            if (!bytes) {
                ExtensionError invalid{
                    QStringLiteral("com.lexmira.Companion.Error.InvalidUserInfo"),
                    QStringLiteral("The message to the extension could not be encoded.")};
                if (context) {
                    complete(std::move(invalid));
                    return;
                }
                QTimer::singleShot(0, [complete = std::move(complete),
                                       invalid = std::move(invalid)] { complete(invalid); });
                return;
            }
            userInfoText = QString::fromUtf8(*bytes);
        }
        call(extensionIdentifier, ExtensionBus::dispatchMessageMethod, {name, userInfoText},
             [completion = std::move(complete)](const QDBusMessage& reply) {
                 if (reply.type() == QDBusMessage::ErrorMessage)
                     completion(errorOf(QDBusError(reply)));
                 else
                     completion(std::nullopt);
             });
    }

    void getState(const QString& extensionIdentifier, QObject* context,
                  StateCompletion completion) override
    {
        call(extensionIdentifier, ExtensionBus::getStateMethod, {},
             [completion = deliverTo(context, std::move(completion))](const QDBusMessage& reply) {
                 if (reply.type() == QDBusMessage::ErrorMessage) {
                     completion(std::nullopt, errorOf(QDBusError(reply)));
                     return;
                 }
                 const QVariantList arguments = reply.arguments();
                 if (reply.signature() != QLatin1String("b") || arguments.size() != 1) {
                     completion(std::nullopt, std::nullopt);
                     return;
                 }
                 completion(arguments.front().toBool(), std::nullopt);
             });
    }

    void showPreferences(const QString& extensionIdentifier, QObject* context,
                         Completion completion) override
    {
        call(extensionIdentifier, ExtensionBus::showPreferencesMethod, {},
             [completion = deliverTo(context, std::move(completion))](const QDBusMessage& reply) {
                 if (reply.type() == QDBusMessage::ErrorMessage)
                     completion(errorOf(QDBusError(reply)));
                 else
                     completion(std::nullopt);
             });
    }

    void getBrowserName(const QString& extensionIdentifier, QObject* context,
                        BrowserNameCompletion completion) override
    {
        auto message = QDBusMessage::createMethodCall(
            extensionIdentifier, ExtensionBus::objectPath(extensionIdentifier),
            QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
        message.setArguments({ExtensionBus::interfaceName, ExtensionBus::browserNameProperty});
        const auto timeout = std::min(timeout_, browserNameTimeout);
        send(message, timeout,
             [completion = deliverTo(context, std::move(completion))](const QDBusMessage& reply) {
                 // Get answers one variant holding the string; anything else is no name.
                 const QVariantList arguments = reply.arguments();
                 if (reply.type() != QDBusMessage::ReplyMessage || arguments.size() != 1) {
                     completion(QString());
                     return;
                 }
                 const QVariant value = arguments.front().value<QDBusVariant>().variant();
                 completion(value.typeId() == QMetaType::QString ? value.toString() : QString());
             });
    }

private:
    // The completion as the caller's context receives it: queued to context's thread and dropped
    // once context is gone; without a context, as it is.
    template <class... Args>
    static std::function<void(Args...)> deliverTo(QObject* context,
                                                  std::function<void(Args...)> completion)
    {
        if (!context)
            return completion;
        return ThreadHandOff::bind(context, std::move(completion));
    }

    // Sends one call and hands its answer (the reply, or an error message: from the peer, from
    // the bus, or NoReply after the time-out) to answered, on the calling thread's event loop.
    void call(const QString& extensionIdentifier, const QString& method,
              const QVariantList& arguments, std::function<void(const QDBusMessage&)> answered)
    {
        auto message = QDBusMessage::createMethodCall(extensionIdentifier,
                                                      ExtensionBus::objectPath(extensionIdentifier),
                                                      ExtensionBus::interfaceName, method);
        message.setArguments(arguments);
        send(message, timeout_, std::move(answered));
    }

    static void send(const QDBusMessage& message, std::chrono::milliseconds timeout,
                     std::function<void(const QDBusMessage&)> answered)
    {
        const QDBusPendingCall pending =
            QDBusConnection::sessionBus().asyncCall(message, int(timeout.count()));
        // A call that failed at once (no bus, an invalid name) is finished already; the watcher
        // still reports it from the event loop, never from inside this call.
        auto* watcher = new QDBusPendingCallWatcher(pending);
        QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
                         [answered = std::move(answered)](QDBusPendingCallWatcher* finished) {
                             finished->deleteLater();
                             answered(finished->reply());
                         });
    }

    std::chrono::milliseconds timeout_;
};

} // namespace

std::unique_ptr<ExtensionBridge> ExtensionBridge::create(std::chrono::milliseconds timeout)
{
    return std::make_unique<DBusExtensionBridge>(timeout);
}

} // namespace lexmira
