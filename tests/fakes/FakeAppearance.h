// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/Appearance.h"

namespace lexmira {

// An appearance the test switches by hand.
class FakeAppearance final : public Appearance {
public:
    bool isDark() const override { return dark_; }

    // Switches and announces the change, as the desktop does.
    void setDark(bool dark)
    {
        dark_ = dark;
        Q_EMIT changed();
    }

private:
    bool dark_ = false;
};

} // namespace lexmira
