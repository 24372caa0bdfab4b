// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Common/AppInfo.h"
#include "Common/DeploymentConfig.h"
#include "services/Auth.h"
#include "services/Norv.h"
#include "services/NorvClient.h"
#include "shared/ContainerValue.h"
#include "shared/SharedData.h"
#include "shared/Unsubscriber.h"
#include "shared/UserInfo.h"

#include <QObject>

#include <memory>
#include <string>

namespace lexmira {

// The application's usage tracker: records events through norv() and keeps the analytics
// client's user in step with the user the extension shares. When none is shared it asks the
// account service, and seeds the companion container identifier from the answer if none is
// stored yet. Main thread only: shared-suite notifications and account answers are bound to the
// tracker, so they reach it on the main thread, and not at all once it is gone.
class Tracker : public QObject {
public:
    // Without a shared user, a user fetch starts once the event loop runs. sharedData and the
    // user defaults in platform must outlive the tracker.
    Tracker(std::string norvClientType, std::string clientVersion, AppInfo::Component component,
            std::shared_ptr<const Auth> auth, const SharedData& sharedData, bool forceIsTest,
            bool isPingDisabled, const DeploymentConfig& deployment, NorvClient::Platform platform);
    ~Tracker();
    Tracker(const Tracker&) = delete;
    Tracker& operator=(const Tracker&) = delete;

    Norv& norv() { return norv_; }

    // Asks the account service who the user is, sending the stored companion container
    // identifier. A user that arrives while none is shared becomes the analytics client's user;
    // no answer changes nothing.
    void fetchUser();

private:
    void sharedUserInfoChanged(const std::optional<UserInfo>& userInfo);
    void userFetched(const Auth::User& user);

    Norv norv_;
    std::shared_ptr<const Auth> auth_;
    ContainerValue<UserInfo> sharedUserInfo_;
    ContainerValue<std::string> sharedCompanionContainerId_;
    ServiceHost accountHost_;
    std::shared_ptr<HttpClient> httpClient_;
    std::shared_ptr<Unsubscriber> userChangeUnsubscriber_;
};

} // namespace lexmira
