// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "platform/SingleInstance.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusReply>
#include <QVariantMap>

#include <cstdio>

namespace {

const QString serviceName = QStringLiteral("com.lexmira.companion");
const QString objectPath = QStringLiteral("/com/lexmira/companion");
const QString applicationInterface = QStringLiteral("org.freedesktop.Application");
constexpr int forwardTimeoutMs = 10'000;

void printError(const QString& text)
{
    std::fprintf(stderr, "lexmira-companion: %s\n", qUtf8Printable(text));
}

// Startup-notification tokens of the launch, so the instance may raise its window.
QVariantMap launchPlatformData()
{
    QVariantMap data;
    if (const auto id = qEnvironmentVariable("DESKTOP_STARTUP_ID"); !id.isEmpty())
        data.insert(QStringLiteral("desktop-startup-id"), id);
    if (const auto token = qEnvironmentVariable("XDG_ACTIVATION_TOKEN"); !token.isEmpty())
        data.insert(QStringLiteral("activation-token"), token);
    return data;
}

} // namespace

// org.freedesktop.Application on the instance's object. Calls arrive on the main thread.
class ApplicationObject final : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    explicit ApplicationObject(SingleInstance* instance)
        : QObject(instance)
        , instance_(instance)
    {
    }

public Q_SLOTS:
    void Activate(const QVariantMap& platformData)
    {
        Q_UNUSED(platformData);
        Q_EMIT instance_->activateRequested();
    }

    void Open(const QStringList& uris, const QVariantMap& platformData)
    {
        Q_UNUSED(platformData);
        Q_EMIT instance_->openRequested(uris);
    }

    // The application offers no actions.
    void ActivateAction(const QString& actionName, const QVariantList& parameter,
                        const QVariantMap& platformData)
    {
        Q_UNUSED(parameter);
        Q_UNUSED(platformData);
        sendErrorReply(QDBusError::InvalidArgs, QStringLiteral("Unknown action: ") + actionName);
    }

private:
    SingleInstance* instance_;
};

namespace {

class DBusSingleInstance final : public SingleInstance {
public:
    DBusSingleInstance()
        : bus_(QDBusConnection::sessionBus())
    {
    }

    ~DBusSingleInstance() override
    {
        if (role_ == Role::primary) {
            bus_.unregisterObject(objectPath);
            bus_.interface()->unregisterService(serviceName);
        }
    }

    Role claim() override
    {
        if (!bus_.isConnected()) {
            printError(QStringLiteral("no session bus (%1); running without single-instance "
                                      "handling and URL forwarding")
                           .arg(bus_.lastError().message()));
            return Role::standalone;
        }
        // Export first, so a request that arrives the moment the name is ours finds the object.
        bus_.registerObject(objectPath, applicationInterface, new ApplicationObject(this),
                            QDBusConnection::ExportAllSlots);
        const QDBusReply<QDBusConnectionInterface::RegisterServiceReply> reply =
            bus_.interface()->registerService(serviceName,
                                              QDBusConnectionInterface::DontQueueService,
                                              QDBusConnectionInterface::DontAllowReplacement);
        if (!reply.isValid()) {
            printError(
                QStringLiteral("could not claim %1: %2").arg(serviceName, reply.error().message()));
            bus_.unregisterObject(objectPath);
            return Role::standalone;
        }
        if (reply.value() == QDBusConnectionInterface::ServiceRegistered)
            return role_ = Role::primary;
        bus_.unregisterObject(objectPath);
        return Role::secondary;
    }

    bool forward(const std::optional<QString>& url) override
    {
        auto call = QDBusMessage::createMethodCall(serviceName, objectPath, applicationInterface,
                                                   url ? QStringLiteral("Open")
                                                       : QStringLiteral("Activate"));
        if (url)
            call << QStringList{*url};
        call << launchPlatformData();
        const QDBusMessage answer = bus_.call(call, QDBus::Block, forwardTimeoutMs);
        if (answer.type() == QDBusMessage::ErrorMessage) {
            printError(QStringLiteral("could not reach the running instance: ") +
                       answer.errorMessage());
            return false;
        }
        return true;
    }

private:
    QDBusConnection bus_;
    Role role_ = Role::standalone;
};

} // namespace

std::unique_ptr<SingleInstance> SingleInstance::create()
{
    return std::make_unique<DBusSingleInstance>();
}

#include "SingleInstance_linux.moc"
