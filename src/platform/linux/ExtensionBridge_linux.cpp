// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "platform/ExtensionBridge.h"

#include "extension1_interface.h"
#include "platform/linux/ExtensionBus.h"
#include "properties_interface.h"
#include "util/Json.h"
#include "util/ThreadHandOff.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QObject>
#include <QTimer>

#include <algorithm>
#include <map>
#include <memory>
#include <mutex>
#include <utility>

namespace lexmira {

namespace {

ExtensionError errorOf(const QDBusError& error)
{
    return ExtensionError{error.name(), error.message()};
}

// A generated call checks the reply's signature itself and turns a mismatch into an
// InvalidSignature error of its own, one that no peer sent (it has no sender). That is an answer
// of the wrong type, not a failure of the extension.
bool isReplyOfTheWrongType(const QDBusMessage& reply)
{
    return reply.type() == QDBusMessage::ErrorMessage && reply.service().isEmpty() &&
           reply.errorName() == QDBusError::errorString(QDBusError::InvalidSignature);
}

// The extension's native side on the session bus, one method call per request through the proxies
// generated from its contract file. The bus connection is shared by the whole process; each call
// owns its watcher, which lives in the calling thread and deletes itself once it has handed the
// answer on to the completion's context.
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
        send(extension(extensionIdentifier).DispatchMessage(name, userInfoText),
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
        send(extension(extensionIdentifier).GetState(),
             [completion = deliverTo(context, std::move(completion))](const QDBusMessage& reply) {
                 if (isReplyOfTheWrongType(reply)) {
                     completion(std::nullopt, std::nullopt);
                     return;
                 }
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
        send(extension(extensionIdentifier).ShowPreferences(),
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
        const auto pending =
            properties(extensionIdentifier)
                .Get(ExtensionBus::interfaceName, ExtensionBus::browserNameProperty);
        send(pending, [completion = deliverTo(context, std::move(completion))](
                          const QDBusMessage& reply) {
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

    // Hands the answer of one call (the reply, or an error message: from the peer, from the bus,
    // or NoReply after the time-out) to answered, on the calling thread's event loop.
    static void send(const QDBusPendingCall& pending,
                     std::function<void(const QDBusMessage&)> answered)
    {
        // A call that failed at once (no bus, an invalid name) is finished already; the watcher
        // still reports it from the event loop, never from inside this call.
        auto* watcher = new QDBusPendingCallWatcher(pending);
        QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
                         [answered = std::move(answered)](QDBusPendingCallWatcher* finished) {
                             finished->deleteLater();
                             answered(finished->reply());
                         });
    }

    // The proxies of one extension identifier, each made on its first use and kept for the
    // bridge's life, with the time-out of the calls it makes. Making one asks the bus daemon
    // once for the name's owner, which the proxy then follows; the calls themselves are
    // asynchronous and may come from any thread. The proxies live in the main thread, where the
    // bridge is destroyed.
    struct Proxies {
        std::unique_ptr<ComLexmiraExtension1Interface> extension;
        std::unique_ptr<OrgFreedesktopDBusPropertiesInterface> properties;
    };

    ComLexmiraExtension1Interface& extension(const QString& identifier)
    {
        const std::lock_guard lock(mutex_);
        return proxy(proxies_[identifier].extension, identifier, timeout_);
    }

    OrgFreedesktopDBusPropertiesInterface& properties(const QString& identifier)
    {
        const std::lock_guard lock(mutex_);
        return proxy(proxies_[identifier].properties, identifier,
                     std::min(timeout_, browserNameTimeout));
    }

    template <typename Proxy>
    static Proxy& proxy(std::unique_ptr<Proxy>& made, const QString& identifier,
                        std::chrono::milliseconds timeout)
    {
        if (!made) {
            made = std::make_unique<Proxy>(identifier, ExtensionBus::objectPath(identifier),
                                           QDBusConnection::sessionBus());
            made->setTimeout(int(timeout.count()));
            if (const auto* application = QCoreApplication::instance())
                made->moveToThread(application->thread());
        }
        return *made;
    }

    std::chrono::milliseconds timeout_;
    std::mutex mutex_;
    std::map<QString, Proxies> proxies_;
};

} // namespace

std::unique_ptr<ExtensionBridge> ExtensionBridge::create(std::chrono::milliseconds timeout)
{
    return std::make_unique<DBusExtensionBridge>(timeout);
}

} // namespace lexmira
