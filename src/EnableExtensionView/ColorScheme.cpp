// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "EnableExtensionView/ColorScheme.h"

QColor colorFromRgb(std::uint32_t rgb, double alpha)
{
    return QColor::fromRgbF(float(((rgb >> 16) & 0xFF) / 255.0), float(((rgb >> 8) & 0xFF) / 255.0),
                            float((rgb & 0xFF) / 255.0), float(alpha));
}

ColorScheme ColorScheme::light()
{
    return {colorFromRgb(0xFFFFFF, 1.0),       colorFromRgb(0x1C1E29, 1.0),
            colorFromRgb(0x196DEF, 1.0),       colorFromRgb(0xFFFFFF, 1.0),
            colorFromRgb(0xE4E4E4, 1.0),       QStringLiteral("EnableLexmiraAnimationLight"),
            QStringLiteral("LightWarningMark")};
}

ColorScheme ColorScheme::dark()
{
    return {colorFromRgb(0x1C1D23, 1.0),      colorFromRgb(0xDDDDDE, 1.0),
            colorFromRgb(0x1768E5, 1.0),      colorFromRgb(0x484848, 1.0),
            colorFromRgb(0x575757, 1.0),      QStringLiteral("EnableLexmiraAnimationDark"),
            QStringLiteral("DarkWarningMark")};
}
