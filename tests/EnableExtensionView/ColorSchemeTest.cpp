// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "EnableExtensionView/ColorScheme.h"

#include <gtest/gtest.h>

namespace lexmira {

namespace {

void expectRgb(const QColor& color, int red, int green, int blue)
{
    EXPECT_EQ(color.red(), red);
    EXPECT_EQ(color.green(), green);
    EXPECT_EQ(color.blue(), blue);
    EXPECT_DOUBLE_EQ(color.alphaF(), 1.0);
}

TEST(ColorScheme, ColourTakesRedGreenBlueFromTheBytesOfTheValue)
{
    const QColor color = colorFromRgb(0x196DEF, 0.5);
    EXPECT_FLOAT_EQ(color.redF(), float(0x19 / 255.0));
    EXPECT_FLOAT_EQ(color.greenF(), float(0x6D / 255.0));
    EXPECT_FLOAT_EQ(color.blueF(), float(0xEF / 255.0));
    EXPECT_NEAR(color.alphaF(), 0.5, 1e-4); // kept in 16 bits
}

TEST(ColorScheme, LightTable)
{
    const auto scheme = ColorScheme::light();
    expectRgb(scheme.panel, 0xFF, 0xFF, 0xFF);
    expectRgb(scheme.text, 0x1C, 0x1E, 0x29);
    expectRgb(scheme.button, 0x19, 0x6D, 0xEF);
    expectRgb(scheme.disableButton, 0xFF, 0xFF, 0xFF);
    expectRgb(scheme.disableButtonBorder, 0xE4, 0xE4, 0xE4);
    EXPECT_EQ(scheme.enableLexmiraAnimationImage, QStringLiteral("EnableLexmiraAnimationLight"));
    EXPECT_EQ(scheme.warningMarkImage, QStringLiteral("LightWarningMark"));
}

TEST(ColorScheme, DarkTable)
{
    const auto scheme = ColorScheme::dark();
    expectRgb(scheme.panel, 0x1C, 0x1D, 0x23);
    expectRgb(scheme.text, 0xDD, 0xDD, 0xDE);
    expectRgb(scheme.button, 0x17, 0x68, 0xE5);
    expectRgb(scheme.disableButton, 0x48, 0x48, 0x48);
    expectRgb(scheme.disableButtonBorder, 0x57, 0x57, 0x57);
    EXPECT_EQ(scheme.enableLexmiraAnimationImage, QStringLiteral("EnableLexmiraAnimationDark"));
    EXPECT_EQ(scheme.warningMarkImage, QStringLiteral("DarkWarningMark"));
}

TEST(ColorScheme, AppearancePicksTheTable)
{
    EXPECT_EQ(ColorScheme::forAppearance(false), ColorScheme::light());
    EXPECT_EQ(ColorScheme::forAppearance(true), ColorScheme::dark());
}

} // namespace

} // namespace lexmira
