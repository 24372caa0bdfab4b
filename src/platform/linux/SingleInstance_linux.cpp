// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "platform/SingleInstance.h"

#include "application_adaptor.h"
#include "platform/PlatformLog.h"
#include "platform/linux/ApplicationBus.h"
#include "platform/linux/ApplicationObject.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QVariantMap>

#include <algorithm>

namespace lexmira {

namespace {

const QString serviceName = QString::fromLatin1(ApplicationBus::serviceName);
const QString objectPath = QString::fromLatin1(ApplicationBus::objectPath);

void printError(const QString& text)
{
    qCWarning(lcBus, "%s", qUtf8Printable(text));
}

const QString startupIdKey = QString::fromLatin1(ApplicationBus::startupIdKey);
const QString activationTokenKey = QString::fromLatin1(ApplicationBus::activationTokenKey);

// A token another process sent: printable ASCII without spaces, of bounded length, or nothing.
// It is written into window properties and startup-notification messages as it is.
QString launchToken(const QVariantMap& platformData, const QString& key)
{
    const QVariant value = platformData.value(key);
    if (value.metaType() != QMetaType::fromType<QString>())
        return {};
    const QString token = value.toString();
    if (token.size() > LaunchActivation::maxTokenBytes)
        return {};
    const bool printable = std::all_of(token.begin(), token.end(), [](QChar c) {
        return c.unicode() > u' ' && c.unicode() < 0x7f;
    });
    return printable ? token : QString();
}

LaunchActivation launchActivation(const QVariantMap& platformData)
{
    return {launchToken(platformData, activationTokenKey), launchToken(platformData, startupIdKey)};
}

} // namespace

ApplicationObject::ApplicationObject(SingleInstance* instance)
    : QObject(instance)
    , instance_(instance)
{
}

void ApplicationObject::Activate(const QVariantMap& platformData)
{
    Q_EMIT instance_->activateRequested(launchActivation(platformData));
}

void ApplicationObject::Open(const QStringList& uris, const QVariantMap& platformData)
{
    Q_EMIT instance_->openRequested(uris, launchActivation(platformData));
}

void ApplicationObject::ActivateAction(const QString& actionName, const QVariantList& parameter,
                                       const QVariantMap& platformData)
{
    Q_UNUSED(parameter);
    Q_UNUSED(platformData);
    sendErrorReply(QDBusError::InvalidArgs, QStringLiteral("Unknown action: ") + actionName);
}

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
        auto* object = new ApplicationObject(this);
        new ApplicationAdaptor(object);
        bus_.registerObject(objectPath, object, QDBusConnection::ExportAdaptors);
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

    bool forward(const std::optional<QString>& url, const LaunchActivation& launch) override
    {
        if (const auto handedOver = handOverIfRunning(url, launch))
            return *handedOver;
        printError(QStringLiteral("could not reach the running instance: it has gone"));
        return false;
    }

private:
    QDBusConnection bus_;
    Role role_ = Role::standalone;
};

} // namespace

std::optional<bool> SingleInstance::handOverIfRunning(const std::optional<QString>& url,
                                                      const LaunchActivation& launch)
{
    const QByteArray utf8 = url ? url->toUtf8() : QByteArray();
    return ApplicationBus::handOverIfRunning(
        url ? utf8.constData() : nullptr,
        {launch.activationToken.toStdString(), launch.startupId.toStdString()});
}

std::unique_ptr<SingleInstance> SingleInstance::create()
{
    return std::make_unique<DBusSingleInstance>();
}

} // namespace lexmira
