// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QImage>
#include <QRect>
#include <QString>
#include <QTimer>
#include <QWidget>

#include <cstddef>
#include <memory>
#include <vector>

class QImageReader;

namespace lexmira {

// A looping animation from an image file (a GIF), played only while it can be seen: from when it
// is shown on screen until it is hidden, each time from its first frame, and never again once
// retired.
//
// When it is first shown, the file is decoded ahead of the frames' times, one frame whenever the
// event loop is idle, keeping of each frame only the rectangle in which it differs from the frame
// before. Playing then decodes nothing: each frame pastes its rectangle into the one image on
// screen and repaints it, in most of the loop a pointer moving over a still page. Frames are
// drawn at one device pixel to each pixel of the frame. Main thread only.
class AnimationView final : public QWidget {
    Q_OBJECT

public:
    // Plays fileName, drawn at filePixelRatio of its pixels to a point, in a view of that size
    // on a screen of devicePixelRatio. Frames are decoded at the view's size in device pixels,
    // scaled as they are decoded when that differs from the file's own.
    AnimationView(QString fileName, qreal filePixelRatio, qreal devicePixelRatio,
                  QWidget* parent = nullptr);
    ~AnimationView() override;

    // False when the file is not an image this can read; such a view draws nothing.
    bool isValid() const { return valid_; }
    const QString& fileName() const { return fileName_; }
    // Frames follow one another: the view is on screen, neither paused nor retired, and its loops
    // are not over.
    bool isRunning() const { return timer_.isActive(); }
    // Holds the frame on screen while paused; frames go on from it when unpaused.
    void setPaused(bool paused);
    // Stops for good (an earlier build's animation, covered by a newer one).
    void retire();
    // The frame on screen, in device pixels, and its place among the loop's distinct frames;
    // null before the view was first shown.
    const QImage& currentFrame() const { return current_; }
    int currentFrameNumber() const { return frame_; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    // One frame of the loop: the rectangle in which it differs from the frame before (for the
    // first frame, from the last one), those pixels, and how long it stays.
    struct Frame {
        QRect changed;
        QImage pixels;
        int delayMs = 0;
    };

    void start();
    void stop();
    // The timer's: the next frame of the loop.
    void advance();
    // The decoder's: one more frame of the file, or the end of it.
    void decodeAhead();
    // Decodes until frames_ holds count frames or the whole file.
    void ensureDecoded(size_t count);
    // Reads the file's next frame into frames_; false at the end of the file.
    bool decodeNextFrame();
    // The file is read whole: from now on the loop plays from frames_.
    void closeLoop();
    void updateDeviceArea(const QRect& area);
    void openReader();

    QString fileName_;
    QSize frameSize_;
    qreal devicePixelRatio_ = 1;
    bool valid_ = false;
    bool paused_ = false;
    bool retired_ = false;
    // How many more times the loop plays after this pass; negative: for ever.
    int loopsLeft_ = -1;
    // The file's count, in the same terms.
    int loopCount_ = -1;
    // The file, while it is decoded, and its last frame read; every frame of the loop is in
    // frames_ once they are gone.
    std::unique_ptr<QImageReader> reader_;
    QImage lastDecoded_;
    QTimer decoder_;
    bool loopComplete_ = false;
    std::vector<Frame> frames_;
    // The first frame whole, where every start begins.
    QImage first_;
    QImage current_;
    int frame_ = 0;
    // How long the frame on screen stays.
    int currentDelayMs_ = 0;
    QTimer timer_;
};

} // namespace lexmira
