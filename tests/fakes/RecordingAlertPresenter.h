// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/AlertPresenter.h"

#include <functional>
#include <vector>

namespace lexmira {

// Answers every alert at once, without showing anything, and keeps each one in the order shown.
class RecordingAlertPresenter final : public AlertPresenter {
public:
    int runModal(const Alert& alert) override
    {
        alerts.push_back(alert);
        if (onShow)
            onShow(alert);
        return answer;
    }

    std::vector<Alert> alerts;
    // The index of the button "chosen".
    int answer = 0;
    // Called while the alert is "on screen", before runModal returns.
    std::function<void(const Alert&)> onShow;
};

} // namespace lexmira
