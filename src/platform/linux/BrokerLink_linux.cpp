// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "platform/BrokerLink.h"

#include "extensionconnection1_adaptor.h"
#include "extensionhost1_interface.h"
#include "platform/linux/ExtensionBus.h"
#include "platform/linux/HostConnectionObject.h"
#include "platform/linux/HostConnectionRecord.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QPointer>

namespace lexmira {

HostConnectionObject::HostConnectionObject(QObject* parent)
    : QObject(parent)
{
}

void HostConnectionObject::Dispatch(const QString& name, const QString& userInfo)
{
    if (broker_.isEmpty() || message().service() != broker_) {
        sendErrorReply(QDBusError::AccessDenied,
                       QStringLiteral("Only the broker may send messages to this connection."));
        return;
    }
    if (!handler_) {
        sendErrorReply(QDBusError::Failed, QStringLiteral("The connection takes no messages."));
        return;
    }
    setDelayedReply(true);
    handler_(name, userInfo, [bus = connection(), call = message()](std::optional<QString> error) {
        bus.send(error ? call.createErrorReply(
                             QStringLiteral("com.lexmira.Extension1.Error.Failed"), *error)
                       : call.createReply());
    });
}

namespace {

const QString connectionPath = QStringLiteral("/com/lexmira/companion/ext/connection");

class DBusBrokerLink final : public BrokerLink {
public:
    explicit DBusBrokerLink(const QString& serviceName)
        : bus_(QDBusConnection::sessionBus())
        , serviceName_(serviceName)
        , object_(nullptr)
        , broker_(serviceName, ExtensionBus::objectPath(serviceName), bus_)
        , watcher_(serviceName, bus_, QDBusServiceWatcher::WatchForOwnerChange)
    {
        new ExtensionConnection1Adaptor(&object_);
        bus_.registerObject(connectionPath, &object_, QDBusConnection::ExportAdaptors);
        // A broker that went away (it crashed, or was replaced) forgets this connection: attach
        // again to the next one, which the bus starts if need be. Where nothing can start it, the
        // next broker is met when it claims the name.
        QObject::connect(&watcher_, &QDBusServiceWatcher::serviceOwnerChanged, &object_,
                         [this](const QString&, const QString& oldOwner, const QString& newOwner) {
                             if (!attached_ || brokerName_.isEmpty())
                                 return;
                             const bool brokerLeft = oldOwner == brokerName_;
                             const bool otherBrokerCame = !newOwner.isEmpty() &&
                                                          newOwner != brokerName_ &&
                                                          attachesInFlight_ == 0;
                             if (brokerLeft || otherBrokerCame)
                                 sendAttach(nullptr, nullptr);
                         });
    }

    void attach(const Peer& peer, QObject* context,
                std::function<void(std::optional<QString> error)> completion) override
    {
        peer_ = peer;
        attached_ = true;
        sendAttach(context, std::move(completion));
    }

    void detach() override
    {
        if (!attached_)
            return;
        attached_ = false;
        broker_.Detach();
        object_.setBroker(QString());
    }

    void setDispatchHandler(DispatchHandler handler) override
    {
        object_.setHandler(std::move(handler));
    }

private:
    void sendAttach(QObject* context, std::function<void(std::optional<QString> error)> completion)
    {
        ++attachesInFlight_;
        auto* watcher = new QDBusPendingCallWatcher(
            broker_.Attach(peer_.browser, peer_.browserName, peer_.extensionId), &object_);
        QObject::connect(watcher, &QDBusPendingCallWatcher::finished, &object_,
                         [this, context = QPointer<QObject>(context),
                          hasContext = context != nullptr,
                          completion = std::move(completion)](QDBusPendingCallWatcher* finished) {
                             finished->deleteLater();
                             --attachesInFlight_;
                             std::optional<QString> error;
                             if (finished->isError()) {
                                 error = finished->error().message();
                             } else {
                                 brokerName_ = finished->reply().service();
                                 object_.setBroker(brokerName_);
                             }
                             if (completion && (!hasContext || context))
                                 completion(error);
                         });
    }

    QDBusConnection bus_;
    QString serviceName_;
    HostConnectionObject object_;
    ComLexmiraExtensionHost1Interface broker_;
    QDBusServiceWatcher watcher_;
    Peer peer_;
    bool attached_ = false;
    QString brokerName_;
    // Attach calls not answered yet; while one is, a broker that claims the name is met by it.
    int attachesInFlight_ = 0;
};

} // namespace

std::unique_ptr<BrokerLink> BrokerLink::create(const QString& serviceName)
{
    return std::make_unique<DBusBrokerLink>(serviceName);
}

std::optional<std::vector<HostPeer>> BrokerLink::connectedHosts(const QString& serviceName)
{
    qDBusRegisterMetaType<HostConnectionRecord>();
    qDBusRegisterMetaType<QList<HostConnectionRecord>>();
    auto call = QDBusMessage::createMethodCall(serviceName, ExtensionBus::objectPath(serviceName),
                                               QStringLiteral("com.lexmira.ExtensionHost1"),
                                               QStringLiteral("Connections"));
    // Asking must not start a broker only to hear that nothing is connected.
    call.setAutoStartService(false);
    const QDBusMessage reply = QDBusConnection::sessionBus().call(call, QDBus::Block, 5'000);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().size() != 1)
        return std::nullopt;
    const auto records =
        qdbus_cast<QList<HostConnectionRecord>>(reply.arguments().front().value<QDBusArgument>());
    std::vector<HostPeer> hosts;
    for (const auto& record : records)
        hosts.push_back({record.connection, record.browser, record.browserName, record.extensionId,
                         record.attachedAtMs});
    return hosts;
}

} // namespace lexmira
