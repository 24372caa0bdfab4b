// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "shared/UserDefaultsContainer.h"

#include "platform/SharedSuite.h"
#include "shared/Callback.h"

namespace lexmira {

UserDefaultsContainer::UserDefaultsContainer(std::shared_ptr<SharedSuite> userDefaults)
    : userDefaults_(std::move(userDefaults))
{
}

std::optional<QByteArray> UserDefaultsContainer::get(const QString& key) const
{
    return userDefaults_->data(key);
}

void UserDefaultsContainer::set(const std::optional<QByteArray>& bytes, const QString& key)
{
    userDefaults_->setData(bytes, key);
}

std::shared_ptr<Unsubscriber> UserDefaultsContainer::subscribe(const QString& key,
                                                               std::function<void()> callback)
{
    auto observer = std::make_shared<Callback>(std::move(callback));
    userDefaults_->addObserver(observer, key);
    return std::make_shared<Unsubscriber>([userDefaults = userDefaults_, observer, key] {
        userDefaults->removeObserver(observer.get(), key);
    });
}

} // namespace lexmira
