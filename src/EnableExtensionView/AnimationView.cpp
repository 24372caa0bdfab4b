// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "EnableExtensionView/AnimationView.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QHash>
#include <QImageReader>
#include <QPaintEvent>
#include <QPainter>

#include <algorithm>
#include <cstring>
#include <utility>

namespace lexmira {

namespace {

// The smallest rectangle holding every pixel in which two frames of one size differ; the whole
// frame when their sizes or formats differ, nothing when they are the same.
QRect changedArea(const QImage& before, const QImage& after)
{
    if (before.size() != after.size() || before.format() != after.format() || before.depth() != 32)
        return after.rect();
    const auto rowLength = static_cast<size_t>(after.width()) * 4;
    int top = 0;
    int bottom = after.height() - 1;
    while (top <= bottom &&
           std::memcmp(before.constScanLine(top), after.constScanLine(top), rowLength) == 0)
        ++top;
    if (top > bottom)
        return {};
    while (std::memcmp(before.constScanLine(bottom), after.constScanLine(bottom), rowLength) == 0)
        --bottom;
    int left = after.width();
    int right = -1;
    for (int y = top; y <= bottom; ++y) {
        const auto* was = reinterpret_cast<const QRgb*>(before.constScanLine(y));
        const auto* now = reinterpret_cast<const QRgb*>(after.constScanLine(y));
        for (int x = 0; x < left; ++x)
            if (was[x] != now[x]) {
                left = x;
                break;
            }
        for (int x = after.width() - 1; x > right; --x)
            if (was[x] != now[x]) {
                right = x;
                break;
            }
    }
    return QRect(QPoint(left, top), QPoint(right, bottom));
}

// The pixels of area in frame, kept with a table of their colours when they hold no more than
// 256 (a quarter of the memory; a GIF frame draws from at most 256). The table holds the
// frame's own 32-bit values, whatever its format: only paste() reads it.
QImage keep(const QImage& frame, const QRect& area)
{
    QImage indexed(area.size(), QImage::Format_Indexed8);
    QHash<QRgb, int> indexOf;
    QList<QRgb> colours;
    for (int y = 0; y < area.height(); ++y) {
        const auto* source =
            reinterpret_cast<const QRgb*>(frame.constScanLine(area.y() + y)) + area.x();
        uchar* target = indexed.scanLine(y);
        for (int x = 0; x < area.width(); ++x) {
            auto found = indexOf.constFind(source[x]);
            if (found == indexOf.constEnd()) {
                if (colours.size() == 256)
                    return frame.copy(area);
                found = indexOf.insert(source[x], int(colours.size()));
                colours << source[x];
            }
            target[x] = uchar(*found);
        }
    }
    indexed.setColorTable(colours);
    return indexed;
}

// Writes pixels, as keep() made them, into frame at area.
void paste(QImage& frame, const QRect& area, const QImage& pixels)
{
    const QList<QRgb> colours = pixels.colorTable();
    for (int y = 0; y < area.height(); ++y) {
        auto* target = reinterpret_cast<QRgb*>(frame.scanLine(area.y() + y)) + area.x();
        if (colours.isEmpty()) {
            std::memcpy(target, pixels.constScanLine(y), size_t(area.width()) * 4);
            continue;
        }
        const uchar* source = pixels.constScanLine(y);
        for (int x = 0; x < area.width(); ++x)
            target[x] = colours[source[x]];
    }
}

// Assistive technologies read it as an animation, by its accessible name.
QAccessibleInterface* accessibleAnimation(const QString& className, QObject* object)
{
    if (className == QLatin1String(AnimationView::staticMetaObject.className()))
        if (auto* view = qobject_cast<AnimationView*>(object))
            return new QAccessibleWidget(view, QAccessible::Animation);
    return nullptr;
}

} // namespace

AnimationView::AnimationView(QString fileName, qreal filePixelRatio, qreal devicePixelRatio,
                             QWidget* parent)
    : QWidget(parent)
    , fileName_(std::move(fileName))
    , devicePixelRatio_(devicePixelRatio)
{
    static const bool accessible = (QAccessible::installFactory(accessibleAnimation), true);
    Q_UNUSED(accessible);

    // Every frame covers the whole view, so nothing beneath it (the panel, the texts reaching
    // into its corner) is drawn again for a frame.
    setAttribute(Qt::WA_OpaquePaintEvent);
    // Only the header is read here: the frames are decoded once the view is on screen.
    QImageReader reader(fileName_);
    valid_ = reader.canRead() && reader.size().isValid();
    if (valid_) {
        const QSize shown = (QSizeF(reader.size()) / filePixelRatio).toSize();
        frameSize_ = shown * devicePixelRatio;
        resize(shown);
    }
    timer_.setSingleShot(true);
    connect(&timer_, &QTimer::timeout, this, &AnimationView::advance);
    // Whenever the event loop has nothing else to do.
    decoder_.setInterval(0);
    connect(&decoder_, &QTimer::timeout, this, &AnimationView::decodeAhead);
}

AnimationView::~AnimationView() = default;

void AnimationView::setPaused(bool paused)
{
    if (paused && isRunning()) {
        timer_.stop();
        paused_ = true;
    } else if (!paused && paused_) {
        paused_ = false;
        if (isVisible() && !retired_)
            timer_.start(currentDelayMs_);
    }
}

void AnimationView::retire()
{
    retired_ = true;
    stop();
}

void AnimationView::paintEvent(QPaintEvent* event)
{
    if (current_.isNull())
        return;
    const QRect area = event->rect();
    const qreal r = devicePixelRatio_;
    QPainter painter(this);
    painter.drawImage(area, current_,
                      QRectF(area.x() * r, area.y() * r, area.width() * r, area.height() * r));
}

void AnimationView::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    start();
}

void AnimationView::hideEvent(QHideEvent* event)
{
    QWidget::hideEvent(event);
    stop();
}

void AnimationView::start()
{
    if (!valid_ || retired_ || paused_ || isRunning())
        return;
    if (!loopComplete_ && !reader_) {
        openReader();
        loopCount_ = reader_->loopCount();
    }
    // The first frame's delay is known once the frame after it differs.
    ensureDecoded(2);
    if (frames_.empty()) {
        valid_ = false;
        return;
    }
    if (!loopComplete_)
        decoder_.start();
    frame_ = 0;
    current_ = first_;
    currentDelayMs_ = frames_.front().delayMs;
    loopsLeft_ = loopCount_;
    update();
    if (frames_.size() > 1)
        timer_.start(currentDelayMs_);
}

void AnimationView::stop()
{
    timer_.stop();
    paused_ = false;
    // A file not read whole is read again from its start: frames are decoded in order.
    if (!loopComplete_) {
        decoder_.stop();
        reader_.reset();
        frames_.clear();
        lastDecoded_ = QImage();
    }
}

void AnimationView::advance()
{
    int next = frame_ + 1;
    ensureDecoded(size_t(next) + 2);
    if (next == int(frames_.size())) {
        // The loop is over for good: its last frame stays.
        if (loopsLeft_ == 0)
            return;
        if (loopsLeft_ > 0)
            --loopsLeft_;
        next = 0;
    }
    const Frame& frame = frames_[next];
    paste(current_, frame.changed, frame.pixels);
    frame_ = next;
    currentDelayMs_ = frame.delayMs;
    updateDeviceArea(frame.changed);
    timer_.start(currentDelayMs_);
}

void AnimationView::decodeAhead()
{
    if (!decodeNextFrame())
        closeLoop();
}

void AnimationView::ensureDecoded(size_t count)
{
    while (!loopComplete_ && frames_.size() < count)
        decodeAhead();
}

bool AnimationView::decodeNextFrame()
{
    QImage image;
    if (!reader_ || !reader_->read(&image))
        return false;
    // Frames are drawn, compared and pasted as 32-bit pixels: the reader's own when it gives
    // them (a GIF's are RGB32), premultiplied ARGB otherwise.
    if (image.format() != QImage::Format_RGB32 &&
        image.format() != QImage::Format_ARGB32_Premultiplied)
        image.convertTo(QImage::Format_ARGB32_Premultiplied);
    // The reader gives a GIF frame that asks for no delay (or 10 ms) the customary 100 ms.
    const int delayMs = std::max(reader_->nextImageDelay(), 0);
    if (frames_.empty()) {
        first_ = image;
        lastDecoded_ = std::move(image);
        frames_.push_back({first_.rect(), QImage(), delayMs});
        return true;
    }
    const QRect changed = changedArea(lastDecoded_, image);
    if (changed.isEmpty()) {
        // Nothing to draw: the frame before simply stays longer.
        frames_.back().delayMs += delayMs;
        return true;
    }
    frames_.push_back({changed, keep(image, changed), delayMs});
    lastDecoded_ = std::move(image);
    return true;
}

void AnimationView::closeLoop()
{
    decoder_.stop();
    reader_.reset();
    loopComplete_ = true;
    if (frames_.empty())
        return;
    // From the last frame back to the first.
    Frame& first = frames_.front();
    first.changed = changedArea(lastDecoded_, first_);
    first.pixels = keep(first_, first.changed);
    lastDecoded_ = QImage();
}

void AnimationView::updateDeviceArea(const QRect& area)
{
    if (area.isEmpty())
        return;
    const qreal r = devicePixelRatio_;
    repaint(
        QRectF(area.x() / r, area.y() / r, area.width() / r, area.height() / r).toAlignedRect());
}

void AnimationView::openReader()
{
    reader_ = std::make_unique<QImageReader>(fileName_);
    // A reader of a format that cannot decode at another size scales each frame itself.
    if (frameSize_ != reader_->size())
        reader_->setScaledSize(frameSize_);
}

} // namespace lexmira
