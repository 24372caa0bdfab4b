// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QColor>
#include <QPalette>
#include <QString>

#include <cstdint>

namespace lexmira {

// Colours and image names of one appearance of the enable-extension view.
struct ColorScheme {
    QColor panel;
    QColor text;
    QColor button;
    QColor disableButton;
    QColor disableButtonBorder;
    QString enableLexmiraAnimationImage;
    QString warningMarkImage;

    static ColorScheme light();
    static ColorScheme dark();
    static ColorScheme forAppearance(bool isDark) { return isDark ? dark() : light(); }

    // The palette of the application's other surfaces (menu bar, menus, the About panel,
    // alerts) in the dark appearance, so that they match the dark panel. The light appearance
    // keeps the platform's palette.
    static QPalette darkPalette();

    bool operator==(const ColorScheme&) const = default;
};

// A colour from a 24-bit 0xRRGGBB value and an alpha, each channel divided by 255.0.
QColor colorFromRgb(std::uint32_t rgb, double alpha);

} // namespace lexmira
