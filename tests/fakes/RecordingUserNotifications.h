// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/UserNotifications.h"

#include <vector>

namespace lexmira {

// Keeps every notification instead of showing it; activate() plays the user's click.
class RecordingUserNotifications final : public UserNotifications {
public:
    void deliver(const UserNotification& notification) override
    {
        delivered.push_back(notification);
    }
    void activate() { Q_EMIT activated(); }

    std::vector<UserNotification> delivered;
};

} // namespace lexmira
