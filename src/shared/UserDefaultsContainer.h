// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "shared/DataContainer.h"

namespace lexmira {

class SharedSuite;

// The shared values over the application group's suite. Callbacks run on the suite's watcher
// thread.
class UserDefaultsContainer final : public DataContainer {
public:
    // userDefaults must not be null.
    explicit UserDefaultsContainer(std::shared_ptr<SharedSuite> userDefaults);

    const std::shared_ptr<SharedSuite>& userDefaults() const { return userDefaults_; }

    std::optional<QByteArray> get(const QString& key) const override;
    void set(const std::optional<QByteArray>& bytes, const QString& key) override;
    // The returned Unsubscriber keeps the suite and the observer alive until it has run.
    std::shared_ptr<Unsubscriber> subscribe(const QString& key,
                                            std::function<void()> callback) override;

private:
    std::shared_ptr<SharedSuite> userDefaults_;
};

} // namespace lexmira
