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

// An animation plays for as long as the disabled panel shows: its frames must decode to opaque
// RGB32, which is shown as it is. A frame with an alpha channel would be scanned and converted,
// pixel by pixel, every time it is shown.
TEST(Artwork, EveryFrameOfEveryAnimationDecodesOpaque)
{
    const Artwork artwork(mainBundleDirectory());
    int animations = 0;
    for (const char* theme : {"Light", "Dark"})
        for (const char* browser : {"Chromium", "Firefox"})
            for (const qreal ratio : {1.0, 2.0}) {
                const QString name = QStringLiteral("EnableLexmiraAnimation%1%2")
                                         .arg(QLatin1String(theme), QLatin1String(browser));
                QImageReader reader(artwork.animation(name, ratio).path);
                int frames = 0;
                while (reader.canRead()) {
                    const QImage frame = reader.read();
                    ASSERT_FALSE(frame.isNull()) << name.toStdString() << " frame " << frames;
                    EXPECT_EQ(frame.format(), QImage::Format_RGB32)
                        << name.toStdString() << " @" << ratio << " frame " << frames;
                    ++frames;
                }
                EXPECT_GT(frames, 1) << name.toStdString();
                ++animations;
            }
    EXPECT_EQ(animations, 8);
}

} // namespace

} // namespace lexmira
