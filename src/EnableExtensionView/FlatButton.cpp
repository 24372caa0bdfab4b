// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "EnableExtensionView/FlatButton.h"

#include <QGraphicsDropShadowEffect>
#include <QPainter>
#include <QPainterPath>

FlatButton::FlatButton(const QString& title, int width, const QColor& background, QWidget* parent)
    : QPushButton(title, parent)
    , background_(background)
{
    setFixedSize(width, height);
    setFlat(true);
    setCursor(Qt::PointingHandCursor);
    QFont titleFont = font();
    titleFont.setFamilies({QStringLiteral("Inter"), titleFont.family()});
    titleFont.setPixelSize(13);
    titleFont.setWeight(QFont::Light);
    setFont(titleFont);
    setAccessibleName(title);

    // Black at 0.25, drawn at an opacity of 0.25, one point down, no blur.
    auto* shadow = new QGraphicsDropShadowEffect(this);
    shadow->setColor(QColor(0, 0, 0, qRound(255 * 0.25 * 0.25)));
    shadow->setOffset(0, 1);
    shadow->setBlurRadius(0);
    setGraphicsEffect(shadow);
}

void FlatButton::setLook(const QString& title, const QColor& background, const QColor& border,
                         qreal borderWidth)
{
    setText(title);
    setAccessibleName(title);
    background_ = background;
    border_ = border;
    borderWidth_ = borderWidth;
    update();
}

void FlatButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const qreal inset = borderWidth_ / 2;
    const QRectF frame = QRectF(rect()).adjusted(inset, inset, -inset, -inset);
    QPainterPath path;
    path.addRoundedRect(frame, cornerRadius, cornerRadius);
    painter.fillPath(path, background_);
    if (borderWidth_ > 0) {
        painter.setPen(QPen(border_, borderWidth_));
        painter.drawPath(path);
    }
    painter.setPen(Qt::white);
    painter.setFont(font());
    painter.drawText(rect(), Qt::AlignCenter, text());
}
