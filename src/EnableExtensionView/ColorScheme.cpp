// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "EnableExtensionView/ColorScheme.h"

namespace lexmira {

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

QPalette ColorScheme::darkPalette()
{
    const ColorScheme scheme = dark();
    const QColor window = scheme.panel;
    const QColor raised = colorFromRgb(0x2A2B33, 1.0);
    const QColor text = scheme.text;
    const QColor dimmed = colorFromRgb(0x7C7D82, 1.0);

    QPalette palette(text, raised, colorFromRgb(0x3A3B44, 1.0), colorFromRgb(0x111216, 1.0),
                     colorFromRgb(0x24252C, 1.0), text, Qt::white, colorFromRgb(0x24252C, 1.0),
                     window);
    palette.setColor(QPalette::Shadow, Qt::black);
    palette.setColor(QPalette::AlternateBase, raised);
    palette.setColor(QPalette::Highlight, scheme.button);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, colorFromRgb(0x6EA4F7, 1.0));
    palette.setColor(QPalette::LinkVisited, colorFromRgb(0x9B8CF2, 1.0));
    palette.setColor(QPalette::ToolTipBase, raised);
    palette.setColor(QPalette::ToolTipText, text);
    palette.setColor(QPalette::PlaceholderText, dimmed);
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, dimmed);
    palette.setColor(QPalette::Disabled, QPalette::Highlight, colorFromRgb(0x3A3B44, 1.0));
    return palette;
}

} // namespace lexmira
