// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "EnableExtensionView/Artwork.h"
#include "platform/MainBundle.h"

#include <QImageReader>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace lexmira {

namespace {

const QString loop = QStringLiteral("EnableLexmiraAnimationLightChromium");

TEST(Artwork, TheAnimationIsDrawnAtTheSizeShownAndAtTwiceThatForDenseScreens)
{
    const Artwork artwork(mainBundleDirectory());

    const auto plain = artwork.animation(loop, 1);
    EXPECT_TRUE(plain.path.endsWith(loop + QStringLiteral(".gif")));
    EXPECT_EQ(plain.pixelRatio, 1);
    EXPECT_EQ(QImageReader(plain.path).size(), QSize(232, 268));

    for (const qreal ratio : {1.5, 2.0, 3.0}) {
        const auto dense = artwork.animation(loop, ratio);
        EXPECT_TRUE(dense.path.endsWith(loop + QStringLiteral("@2x.gif"))) << ratio;
        EXPECT_EQ(dense.pixelRatio, 2);
        EXPECT_EQ(QImageReader(dense.path).size(), QSize(464, 536));
    }
}

TEST(Artwork, AnAnimationWithoutADenseFileIsTheOneFileForEveryScreen)
{
    QTemporaryDir bundle;
    ASSERT_TRUE(QFile::copy(mainBundleDirectory() + QStringLiteral("/") + loop +
                                QStringLiteral(".gif"),
                            bundle.filePath(QStringLiteral("Loop.gif"))));
    const Artwork artwork(bundle.path());
    const auto file = artwork.animation(QStringLiteral("Loop"), 2);
    EXPECT_EQ(file.path, bundle.filePath(QStringLiteral("Loop.gif")));
    EXPECT_EQ(file.pixelRatio, 1);
    EXPECT_TRUE(artwork.animation(QStringLiteral("Missing"), 1).path.isEmpty());
    EXPECT_TRUE(artwork.animation(QStringLiteral("Missing"), 2).path.isEmpty());
}

} // namespace

} // namespace lexmira
