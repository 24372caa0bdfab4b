// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "app/Env.h"

#include "Common/DeploymentConfig.h"
#include "EnableExtensionView/ExtensionPreferences.h"
#include "app/ModalAlertPresenter.h"
#include "app/StartupTrace.h"
#include "bridge/OAuth.h"
#include "platform/Appearance.h"
#include "platform/ExtensionBridge.h"
#include "platform/HttpClient.h"
#include "platform/HttpCookieParser.h"
#include "platform/KeychainItems.h"
#include "platform/MainBundle.h"
#include "platform/SharedSuite.h"
#include "platform/SystemLog.h"
#include "platform/UserDefaults.h"
#include "platform/UserNotifications.h"
#include "services/Auth.h"
#include "services/Tracker.h"
#include "shared/SharedUserInfoProvider.h"
#include "util/AlertQueue.h"
#include "util/FatalError.h"
#include "util/NoDestructor.h"

#include <QUuid>

namespace lexmira {

namespace {

QString requireBundleIdentifier(const Bundle& bundle)
{
    const auto identifier = bundle.bundleIdentifier();
    if (!identifier)
        fatalError("The bundle has no identifier");
    return *identifier;
}

// A fresh random UUID, upper-case and hyphenated: one per process start.
std::string newSessionId()
{
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper().toStdString();
}

} // namespace

Env::Env(const Bundle& bundle)
    : EnvCommon(bundle, SharedSuite::open(QString::fromUtf8(appGroupSuiteName)),
                KeychainItems::create())
    , userDefaults_(UserDefaults::standard(requireBundleIdentifier(bundle)))
{
    const auto deployment = DeploymentConfig::load(bundle);
    httpClient_ =
        HttpClient::create(HttpClient::userAgentFor(bundle.shortVersion().value_or(QString())));
    skrivo_.emplace(deployment.logHost.host, deployment.logHost.port, "/logv2",
                    deployment.webOrigin, envType, appInfo.component, clientInfo,
                    std::make_shared<SharedUserInfoProvider>(sharedData), newSessionId(),
                    httpClient_, SystemLog::create());
    auth_ = std::make_shared<Auth>(clientInfo.clientType, clientInfo.clientVersion,
                                   HttpCookieParser::create());
    tracker_ = std::make_unique<Tracker>(clientInfo.norvClientType, clientInfo.clientVersion,
                                         AppInfo::Component::companion, auth_, sharedData,
                                         forcesTestEvents(envType), true, deployment,
                                         NorvClient::Platform{httpClient_, userDefaults_.get()});
    extensionBridge_ = ExtensionBridge::create();
    // Alerts come from completions that can arrive while one is on screen; they are shown one
    // after another.
    alertPresenter_ = std::make_unique<AlertQueue>(std::make_unique<ModalAlertPresenter>(
        qEnvironmentVariable(ModalAlertPresenter::recordFileVariable)));
    oauth_ = std::make_unique<OAuth>(true, skrivo(), appInfo.extensionBundleIdentifier,
                                     *extensionBridge_, sharedData, *alertPresenter_);

    // The desktop and the user interface's own long-lived helpers.
    appearance_ = Appearance::create();
    userNotifications_ = UserNotifications::create(QString::fromStdString(appInfo.appName));
    extensionPreferences_ = std::make_unique<ExtensionPreferences>(
        *extensionBridge_, QString::fromStdString(appInfo.extensionBundleIdentifier),
        *alertPresenter_, skrivo());
    startupTrace::mark("envBuilt");
}

Env::~Env() = default;

const Skrivo& Env::skrivo() const
{
    if (!skrivo_)
        fatalError("env.skrivo is not set");
    return *skrivo_;
}

const Auth& Env::auth() const
{
    if (!auth_)
        fatalError("env.auth is not set");
    return *auth_;
}

Tracker& Env::tracker() const
{
    if (!tracker_)
        fatalError("env.tracker is not set");
    return *tracker_;
}

ExtensionBridge& Env::extensionBridge() const
{
    if (!extensionBridge_)
        fatalError("env.extensionBridge is not set");
    return *extensionBridge_;
}

AlertPresenter& Env::alertPresenter() const
{
    if (!alertPresenter_)
        fatalError("env.alertPresenter is not set");
    return *alertPresenter_;
}

OAuth& Env::oauth() const
{
    if (!oauth_)
        fatalError("env.oauth is not set");
    return *oauth_;
}

Appearance& Env::appearance() const
{
    if (!appearance_)
        fatalError("env.appearance is not set");
    return *appearance_;
}

UserNotifications& Env::userNotifications() const
{
    if (!userNotifications_)
        fatalError("env.userNotifications is not set");
    return *userNotifications_;
}

ExtensionPreferences& Env::extensionPreferences() const
{
    if (!extensionPreferences_)
        fatalError("env.extensionPreferences is not set");
    return *extensionPreferences_;
}

Env& env()
{
    static NoDestructor<Env> instance{Bundle(mainBundleDirectory())};
    return instance.get();
}

} // namespace lexmira
