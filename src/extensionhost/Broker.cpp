// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "extensionhost/Broker.h"

#include "extensionhost/HostLog.h"

#include <QDateTime>
#include <QProcess>

#include <algorithm>

namespace lexmira {

namespace {

QString describeUserInfo(const QString& userInfo)
{
    return userInfo.isEmpty() ? QStringLiteral("no user info") : userInfo;
}

} // namespace

const QString Broker::notConnectedError =
    QStringLiteral("com.lexmira.Extension1.Error.NotConnected");
const QString Broker::noReplyError = QStringLiteral("com.lexmira.Extension1.Error.NoReply");
const QString Broker::failedError = QStringLiteral("com.lexmira.Extension1.Error.Failed");

Broker::Broker(const BrowserRegistry& registry, std::chrono::milliseconds idleTimeout,
               std::chrono::milliseconds replyTimeout, QObject* parent)
    : QObject(parent)
    , registry_(registry)
    , replyTimeout_(replyTimeout)
{
    idleTimer_.setSingleShot(true);
    idleTimer_.setInterval(idleTimeout);
    connect(&idleTimer_, &QTimer::timeout, this, [this] {
        if (hosts_.empty() && dispatchesInFlight_ == 0)
            Q_EMIT idle();
    });
    idleTimer_.start();
}

void Broker::touch() const
{
    if (hosts_.empty())
        idleTimer_.start();
    else
        idleTimer_.stop();
}

bool Broker::enabled() const
{
    touch();
    return !hosts_.empty();
}

QString Broker::browserName() const
{
    touch();
    if (!hosts_.empty())
        return hosts_.back().browserName;
    if (lastHost_)
        return lastHost_->browserName;
    if (const auto browser = registry_.mostRecent())
        return browser->displayName;
    return QString();
}

void Broker::dispatchMessage(const QString& name, const QString& userInfo, Completion completion)
{
    touch();
    if (hosts_.empty() || !bus_) {
        qCInfo(lcBroker).noquote() << "dispatch" << name << "with" << describeUserInfo(userInfo)
                                   << "failed: no browser connected";
        completion(ExtensionError{
            notConnectedError,
            QStringLiteral("The Lexmira extension is not connected: no browser with the "
                           "extension enabled is running.")});
        return;
    }
    ++dispatchesInFlight_;
    qCInfo(lcBroker).noquote() << "dispatch" << name << "with" << describeUserInfo(userInfo) << "to"
                               << hosts_.back().browserName;
    bus_->dispatchToHost(
        hosts_.back().connection, name, userInfo, replyTimeout_, this,
        [this, name, completion = std::move(completion)](std::optional<ExtensionError> error) {
            --dispatchesInFlight_;
            touch();
            if (error)
                qCInfo(lcBroker).noquote()
                    << "dispatch" << name << "failed:" << error->localizedDescription;
            else
                qCInfo(lcBroker).noquote() << "dispatch" << name << "answered";
            if (error && error->name == noReplyError)
                error = ExtensionError{noReplyError,
                                       QStringLiteral("The Lexmira extension did not answer "
                                                      "within %1 seconds.")
                                           .arg(replyTimeout_.count() / 1000.0)};
            else if (error && error->name != failedError)
                error =
                    ExtensionError{notConnectedError,
                                   QStringLiteral("The Lexmira extension's connection ended: ") +
                                       error->localizedDescription};
            completion(std::move(error));
        });
}

std::optional<BrowserRegistry::Browser> Broker::currentBrowser() const
{
    const HostPeer* host = !hosts_.empty() ? &hosts_.back() : (lastHost_ ? &*lastHost_ : nullptr);
    if (host)
        if (auto browser = registry_.forConnection(BrowserRegistry::familyOf(host->browser),
                                                   host->extensionId))
            return browser;
    return registry_.mostRecent();
}

std::optional<ExtensionError> Broker::showPreferences()
{
    touch();
    const auto browser = currentBrowser();
    if (!browser || browser->command.isEmpty())
        return ExtensionError{failedError,
                              QStringLiteral("No browser is set up for the Lexmira extension. "
                                             "Run \"lexmira-extension-host install\" first.")};
    QStringList arguments = browser->command.mid(1);
    arguments.append(browser->settingsPage);
    qCInfo(lcBroker).noquote() << "settings page:" << browser->command.front()
                               << arguments.join(u' ');
    if (!QProcess::startDetached(browser->command.front(), arguments))
        return ExtensionError{failedError,
                              QStringLiteral("Could not start %1 (%2).")
                                  .arg(browser->displayName, browser->command.front())};
    return std::nullopt;
}

void Broker::hostAttached(const HostPeer& peer)
{
    const auto existing = std::find_if(hosts_.begin(), hosts_.end(), [&](const HostPeer& host) {
        return host.connection == peer.connection;
    });
    HostPeer host = peer;
    host.attachedAtMs = QDateTime::currentMSecsSinceEpoch();
    qCInfo(lcBroker).noquote() << host.browserName << "connected, extension" << host.extensionId;
    if (existing != hosts_.end())
        hosts_.erase(existing);
    hosts_.push_back(host);
    touch();
}

void Broker::hostDetached(const QString& connection)
{
    const auto existing = std::find_if(hosts_.begin(), hosts_.end(), [&](const HostPeer& host) {
        return host.connection == connection;
    });
    if (existing == hosts_.end())
        return;
    lastHost_ = *existing;
    qCInfo(lcBroker).noquote() << existing->browserName << "disconnected";
    hosts_.erase(existing);
    touch();
}

} // namespace lexmira
