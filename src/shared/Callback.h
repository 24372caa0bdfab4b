// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/SharedSuite.h"

#include <functional>

namespace lexmira {

// The observer UserDefaultsContainer adds to the suite for one subscription: runs cb once per
// notification, whatever the key.
class Callback final : public SharedSuiteObserver {
public:
    explicit Callback(std::function<void()> cb);

    void observeValue(const QString& key) override;

private:
    std::function<void()> cb_;
};

} // namespace lexmira
