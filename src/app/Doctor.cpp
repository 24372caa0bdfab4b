// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "app/Doctor.h"

#include "Common/DeploymentConfig.h"
#include "Common/EnvCommon.h"
#include "diagnostics/HealthChecks.h"
#include "extensionhost/ExtensionHealth.h"

#include <utility>

namespace lexmira {

namespace {

std::optional<QUrl> serviceUrl(const ServiceHost& host)
{
    QUrl url;
    url.setScheme(QStringLiteral("https"));
    url.setHost(QString::fromStdString(host.host), QUrl::StrictMode);
    if (host.port)
        url.setPort(*host.port);
    url.setPath(QStringLiteral("/"));
    if (!url.isValid() || url.host().isEmpty())
        return std::nullopt;
    return url;
}

std::optional<QUrl> serviceUrl(const std::string& text)
{
    const QUrl url(QString::fromStdString(text), QUrl::StrictMode);
    if (!url.isValid() || url.scheme() != QStringLiteral("https") || url.host().isEmpty())
        return std::nullopt;
    return url;
}

QString configured(const ServiceHost& host)
{
    return QString::fromStdString(host.host) +
           (host.port ? QStringLiteral(":") + QString::number(*host.port) : QString());
}

} // namespace

Doctor::Doctor(SystemHealth& health, Installations installations, Bundle bundle,
               QProcessEnvironment environment, QString companionName)
    : health_(health)
    , installations_(std::move(installations))
    , bundle_(std::move(bundle))
    , environment_(std::move(environment))
    , companionName_(std::move(companionName))
{
}

Diagnosis Doctor::examine() const
{
    Diagnosis diagnosis;
    diagnosis.add(HealthChecks::sessionBus(health_.sessionBus(companionName_)));
    diagnosis.add(HealthChecks::sharedSuite(health_.sharedSuite(
        QString::fromUtf8(appGroupSuiteName.data(), qsizetype(appGroupSuiteName.size())))));
    diagnosis.add(HealthChecks::secretService(health_.secretService()));
    diagnosis.add(ExtensionHealth::checks(
        installations_.records(), health_.broker(QString::fromLatin1(Installations::kHostName))));
    diagnosis.add(HealthChecks::settingsPortal(health_.settingsPortal()));
    diagnosis.add(HealthChecks::notificationServer(health_.notificationServer()));

    std::string error;
    const auto deployment = DeploymentConfig::read(bundle_, environment_, error);
    if (!deployment) {
        diagnosis.add(HealthChecks::unreadableServices(QString::fromStdString(error)));
        return diagnosis;
    }
    const auto check = [&](HealthChecks::Service which, const QString& text,
                           const std::optional<QUrl>& url) {
        diagnosis.add(HealthChecks::service(which, text, url,
                                            url ? health_.service(*url) : NetworkServiceHealth{}));
    };
    check(HealthChecks::Service::account, configured(deployment->accountHost),
          serviceUrl(deployment->accountHost));
    check(HealthChecks::Service::analytics, QString::fromStdString(deployment->analyticsUrl),
          serviceUrl(deployment->analyticsUrl));
    check(HealthChecks::Service::log, configured(deployment->logHost),
          serviceUrl(deployment->logHost));
    return diagnosis;
}

} // namespace lexmira
