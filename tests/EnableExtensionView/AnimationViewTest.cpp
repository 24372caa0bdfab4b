// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "EnableExtensionView/AnimationView.h"
#include "platform/MainBundle.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QImageReader>
#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <vector>

using namespace std::chrono_literals;

namespace lexmira {

namespace {

// A one-pixel GIF whose frames are white (0) or black (1), each shown for delay hundredths of a
// second, looping for ever when loops.
QByteArray onePixelGif(const std::vector<int>& frames, int delay, bool loops)
{
    QByteArray gif = QByteArray::fromHex("474946383961"
                                         "01000100"
                                         "800000"
                                         "ffffff000000");
    if (loops)
        gif += QByteArray::fromHex("21ff0b") + QByteArray("NETSCAPE2.0") +
               QByteArray::fromHex("03010000"
                                   "00");
    for (const int colour : frames) {
        gif += QByteArray::fromHex("21f904") + char(0) + char(delay & 0xff) + char(delay >> 8) +
               QByteArray::fromHex("0000");
        gif += QByteArray::fromHex("2c"
                                   "00000000"
                                   "01000100"
                                   "00");
        // Clear, the pixel, end: three-bit codes.
        gif += QByteArray::fromHex(colour ? "02024c0100" : "0202440100");
    }
    return gif + QByteArray::fromHex("3b");
}

// The distinct frames of a file in the order they follow one another.
std::vector<QImage> distinctFrames(const QString& fileName)
{
    std::vector<QImage> frames;
    QImageReader reader(fileName);
    QImage image;
    while (reader.read(&image)) {
        if (frames.empty() || image != frames.back())
            frames.push_back(image);
    }
    return frames;
}

class AnimationViewTest : public ::testing::Test {
protected:
    QString write(const QString& name, const QByteArray& bytes)
    {
        const QString path = dir.filePath(name);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            ADD_FAILURE() << "cannot write " << path.toStdString();
        return path;
    }

    QTemporaryDir dir;
};

// What an animation shows each time it paints: the frame's place in the loop and its pixels.
struct PaintedFrames : QObject {
    explicit PaintedFrames(AnimationView& view)
        : view(view)
    {
        view.installEventFilter(this);
    }
    ~PaintedFrames() override { view.removeEventFilter(this); }
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::Paint)
            shown.push_back({view.currentFrameNumber(), view.currentFrame()});
        return false;
    }
    struct Shown {
        int number;
        QImage frame;
    };
    AnimationView& view;
    std::vector<Shown> shown;
};

TEST_F(AnimationViewTest, ItShowsTheFramesTheFileHoldsAndLoopsWithoutReadingItAgain)
{
    const QString artwork =
        mainBundleDirectory() + QStringLiteral("/EnableLexmiraAnimationLightChromium.gif");
    const QString path = dir.filePath(QStringLiteral("animation.gif"));
    ASSERT_TRUE(QFile::copy(artwork, path));
    const std::vector<QImage> expected = distinctFrames(path);
    ASSERT_GT(expected.size(), 30u);

    AnimationView view(path, 1.0, 1.0);
    ASSERT_TRUE(view.isValid());
    PaintedFrames painted(view);
    view.show();
    // The file is read ahead of the frames' times and never again: once it is deleted, the rest
    // of the five-second loop and the start of the next one still play.
    test::spin(1s);
    ASSERT_TRUE(QFile::remove(path));
    const size_t beforeRemoval = painted.shown.size();
    test::spin(5500ms);
    EXPECT_TRUE(view.isRunning());

    ASSERT_GT(painted.shown.size(), beforeRemoval + 30) << "the loop went on";
    EXPECT_TRUE(std::any_of(painted.shown.begin() + beforeRemoval, painted.shown.end(),
                            [](const auto& shown) { return shown.number == 0; }))
        << "it came round to its first frame";
    for (const auto& [number, frame] : painted.shown) {
        ASSERT_LT(number, int(expected.size()));
        EXPECT_TRUE(frame == expected[number]) << "frame " << number;
    }

    // Closed and opened again, it starts over from its first frame.
    view.hide();
    EXPECT_FALSE(view.isRunning());
    view.show();
    EXPECT_TRUE(view.isRunning());
    EXPECT_EQ(view.currentFrameNumber(), 0);
    EXPECT_TRUE(view.currentFrame() == expected.front());
}

TEST_F(AnimationViewTest, AFileWithoutLoopsPlaysOnceAndKeepsItsLastFrame)
{
    AnimationView view(write(QStringLiteral("once.gif"), onePixelGif({0, 1, 0, 1}, 2, false)), 1.0,
                       1.0);
    ASSERT_TRUE(view.isValid());
    view.show();
    EXPECT_TRUE(view.isRunning());
    ASSERT_TRUE(test::waitUntil([&] { return !view.isRunning(); }, 5s));
    EXPECT_EQ(view.currentFrameNumber(), 3);
    EXPECT_EQ(view.currentFrame().pixel(0, 0), qRgb(0, 0, 0));
    test::spin(200ms);
    EXPECT_EQ(view.currentFrameNumber(), 3);
}

TEST_F(AnimationViewTest, ABrokenFileShowsNothingAndNeverPlays)
{
    AnimationView garbage(write(QStringLiteral("garbage.gif"), QByteArray(64, 'x')), 1.0, 1.0);
    EXPECT_FALSE(garbage.isValid());
    garbage.show();
    EXPECT_FALSE(garbage.isRunning());

    // A header that promises frames the file does not hold.
    const QByteArray whole = onePixelGif({0, 1}, 2, true);
    AnimationView cut(write(QStringLiteral("cut.gif"), whole.left(13 + 6 + 19)), 1.0, 1.0);
    cut.show();
    test::spin(100ms);
    EXPECT_FALSE(cut.isRunning());
    EXPECT_TRUE(cut.currentFrame().isNull());
}

} // namespace

} // namespace lexmira
