// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "platform/BrokerBus.h"

#include "extension1_adaptor.h"
#include "extensionconnection1_interface.h"
#include "extensionhost1_adaptor.h"
#include "platform/linux/BrokerObject.h"
#include "platform/linux/ExtensionBus.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QPointer>
#include <QTimer>

#include <utility>

namespace lexmira {

BrokerObject::BrokerObject(BrokerBus::Handler& handler, QObject* parent)
    : QObject(parent)
    , handler_(handler)
{
}

bool BrokerObject::GetState()
{
    return handler_.enabled();
}

void BrokerObject::DispatchMessage(const QString& name, const QString& userInfo)
{
    setDelayedReply(true);
    handler_.dispatchMessage(
        name, userInfo,
        [bus = connection(), call = message()](std::optional<ExtensionError> error) {
            bus.send(error ? call.createErrorReply(error->name, error->localizedDescription)
                           : call.createReply());
        });
}

void BrokerObject::ShowPreferences()
{
    if (const auto error = handler_.showPreferences())
        sendErrorReply(error->name, error->localizedDescription);
}

void BrokerObject::Attach(const QString& browser, const QString& browserName,
                          const QString& extensionId)
{
    const QString host = message().service();
    handler_.hostAttached(HostPeer{host, browser, browserName, extensionId, 0});
    Q_EMIT hostAttached(host);
}

void BrokerObject::Detach()
{
    handler_.hostDetached(message().service());
}

QList<HostConnectionRecord> BrokerObject::Connections()
{
    QList<HostConnectionRecord> records;
    for (const auto& host : handler_.hosts())
        records.append(
            {host.connection, host.browser, host.browserName, host.extensionId, host.attachedAtMs});
    return records;
}

namespace {

const QString connectionPath = QStringLiteral("/com/lexmira/companion/ext/connection");
// How much longer than the broker's time-out a call to a host may take on the bus.
constexpr int callTimeoutMargin = 1000;

class DBusBrokerBus final : public BrokerBus {
public:
    DBusBrokerBus(QDBusConnection bus, const QString& serviceName, Handler& handler)
        : bus_(std::move(bus))
        , serviceName_(serviceName)
        , object_(handler, nullptr)
        , watcher_(QString(), bus_, QDBusServiceWatcher::WatchForUnregistration)
    {
        new Extension1Adaptor(&object_);
        new ExtensionHost1Adaptor(&object_);
        // A host that leaves the bus (its browser closed, or it was killed) is detached.
        QObject::connect(&object_, &BrokerObject::hostAttached, &watcher_,
                         [this](const QString& host) { watcher_.addWatchedService(host); });
        QObject::connect(&watcher_, &QDBusServiceWatcher::serviceUnregistered, &object_,
                         [this, &handler](const QString& host) {
                             watcher_.removeWatchedService(host);
                             handler.hostDetached(host);
                         });
    }

    ~DBusBrokerBus() override
    {
        bus_.unregisterObject(ExtensionBus::objectPath(serviceName_));
        bus_.unregisterService(serviceName_);
    }

    bool publish(QString& error)
    {
        if (!bus_.isConnected()) {
            error = QStringLiteral("no session bus: ") + bus_.lastError().message();
            return false;
        }
        if (!bus_.registerObject(ExtensionBus::objectPath(serviceName_), &object_,
                                 QDBusConnection::ExportAdaptors)) {
            error = QStringLiteral("cannot export the broker's object");
            return false;
        }
        // Never queued behind another owner: a second broker simply exits.
        const auto reply = bus_.interface()->registerService(
            serviceName_, QDBusConnectionInterface::DontQueueService,
            QDBusConnectionInterface::DontAllowReplacement);
        if (!reply.isValid() || reply.value() != QDBusConnectionInterface::ServiceRegistered) {
            error = serviceName_ + QStringLiteral(" is owned by another process");
            return false;
        }
        return true;
    }

    void dispatchToHost(const QString& connection, const QString& name, const QString& userInfo,
                        std::chrono::milliseconds timeout, QObject* context,
                        Handler::Completion completion) override
    {
        // The time-out is the broker's own timer: the bus also answers NoReply when the host
        // leaves the bus without replying (it was killed, or its browser closed), and that is a
        // connection that ended, not an extension that is slow. The call itself may run a little
        // longer, so that its own time-out never comes first.
        auto pending = std::make_shared<Handler::Completion>(std::move(completion));
        auto complete = [pending](std::optional<ExtensionError> error) {
            if (!*pending)
                return;
            const auto done = std::exchange(*pending, nullptr);
            done(std::move(error));
        };
        auto* timer = new QTimer(context);
        timer->setSingleShot(true);
        timer->setTimerType(Qt::PreciseTimer);
        QObject::connect(timer, &QTimer::timeout, context, [timer, complete] {
            timer->deleteLater();
            complete(ExtensionError{QStringLiteral("com.lexmira.Extension1.Error.NoReply"),
                                    QStringLiteral("The host did not answer in time.")});
        });
        timer->start(timeout);

        ComLexmiraExtensionConnection1Interface host(connection, connectionPath, bus_);
        host.setTimeout(int(timeout.count()) + callTimeoutMargin);
        auto* watcher = new QDBusPendingCallWatcher(host.Dispatch(name, userInfo), context);
        QObject::connect(
            watcher, &QDBusPendingCallWatcher::finished, context,
            [timer = QPointer<QTimer>(timer), complete](QDBusPendingCallWatcher* finished) {
                finished->deleteLater();
                if (timer) {
                    timer->stop();
                    timer->deleteLater();
                }
                const QDBusError error = finished->error();
                if (error.type() == QDBusError::NoReply)
                    complete(ExtensionError{
                        QStringLiteral("org.freedesktop.DBus.Error.NoReply"),
                        QStringLiteral("the host left the session bus without answering")});
                else if (finished->isError())
                    complete(ExtensionError{error.name(), error.message()});
                else
                    complete(std::nullopt);
            });
    }

private:
    QDBusConnection bus_;
    QString serviceName_;
    BrokerObject object_;
    QDBusServiceWatcher watcher_;
};

} // namespace

std::unique_ptr<BrokerBus> BrokerBus::publish(const QString& serviceName, Handler& handler,
                                              QString& error)
{
    qDBusRegisterMetaType<HostConnectionRecord>();
    qDBusRegisterMetaType<QList<HostConnectionRecord>>();
    auto bus = std::make_unique<DBusBrokerBus>(QDBusConnection::sessionBus(), serviceName, handler);
    if (!bus->publish(error))
        return nullptr;
    return bus;
}

} // namespace lexmira
