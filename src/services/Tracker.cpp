// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "services/Tracker.h"

#include "util/FatalError.h"
#include "util/ThreadHandOff.h"

namespace lexmira {

namespace {

// The analytics endpoint: an https URL with a host.
QUrl analyticsUrl(const std::string& text)
{
    const QUrl url(QString::fromStdString(text), QUrl::StrictMode);
    if (!url.isValid() || url.scheme() != QStringLiteral("https") || url.host().isEmpty())
        fatalError("The analytics URL does not parse: " + text);
    return url;
}

} // namespace

Tracker::Tracker(std::string norvClientType, std::string clientVersion,
                 AppInfo::Component component, std::shared_ptr<const Auth> auth,
                 const SharedData& sharedData, bool forceIsTest, bool isPingDisabled,
                 const DeploymentConfig& deployment, NorvClient::Platform platform)
    : norv_(std::make_unique<NorvClient>(deployment.webOrigin,
                                         analyticsUrl(deployment.analyticsUrl),
                                         std::move(norvClientType), std::move(clientVersion),
                                         forceIsTest, isPingDisabled, platform),
            Norv::Props(), component)
    , auth_(std::move(auth))
    , sharedUserInfo_(sharedData.userInfo)
    , sharedCompanionContainerId_(sharedData.companionContainerId)
    , accountHost_(deployment.accountHost)
    , httpClient_(platform.httpClient)
{
    // Notifications come on the writer's thread.
    userChangeUnsubscriber_ = sharedUserInfo_.subscribe(ThreadHandOff::bind(
        this, std::function<void(std::optional<UserInfo>)>(
                  [this](std::optional<UserInfo> userInfo) { sharedUserInfoChanged(userInfo); })));

    if (const auto userInfo = sharedUserInfo_.value())
        norv_.client().setUserInfo(*userInfo);
    else
        // Sent once the event loop runs. At the application's start it is the first request,
        // which sets up TLS, and the window does not wait for that.
        QMetaObject::invokeMethod(this, &Tracker::fetchUser, Qt::QueuedConnection);
}

Tracker::~Tracker()
{
    userChangeUnsubscriber_->unsubscribe();
}

void Tracker::fetchUser()
{
    const auto url = Auth::userUrl(accountHost_);
    if (!url)
        return;
    const auto containerId = sharedCompanionContainerId_.value();
    // The account client answers on the network's thread; only a user travels on.
    auto fetched = ThreadHandOff::bind(
        this, std::function<void(Auth::User)>([this](Auth::User user) { userFetched(user); }));
    httpClient_->send(auth_->makeUserRequest("POST", *url, std::nullopt, containerId),
                      [auth = auth_, url = *url, containerId, fetched = std::move(fetched)](
                          std::optional<QByteArray> data, std::optional<HttpResponse> response,
                          std::optional<HttpError> error) {
                          auth->handleUserResponse(data, response, error, url, std::nullopt,
                                                   containerId,
                                                   [&fetched](std::optional<Auth::User> user) {
                                                       if (user)
                                                           fetched(std::move(*user));
                                                   });
                      });
}

void Tracker::sharedUserInfoChanged(const std::optional<UserInfo>& userInfo)
{
    norv_.client().setUserInfo(userInfo);
    if (!userInfo)
        fetchUser();
}

void Tracker::userFetched(const Auth::User& user)
{
    // The extension shared a user meanwhile; the subscription has handed it on already.
    if (sharedUserInfo_.value())
        return;
    // A user without a container identifier leaves the shared one unset, and stands in the
    // analytics client with an empty one.
    if (!sharedCompanionContainerId_.value() && user.containerId)
        sharedCompanionContainerId_.setValue(*user.containerId);
    norv_.client().setUserInfo(
        UserInfo{user.id, user.isTest, user.isAnonymous, user.containerId.value_or(std::string())});
}

} // namespace lexmira
