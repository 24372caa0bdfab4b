// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QPushButton>

// The view's button: a filled rounded rectangle with a white title and a faint shadow below.
class FlatButton final : public QPushButton {
    Q_OBJECT

public:
    static constexpr int height = 32;
    static constexpr qreal cornerRadius = 3.5;

    FlatButton(const QString& title, int width, const QColor& background,
               QWidget* parent = nullptr);

    // Changes title, fill and border; the title stays white.
    void setLook(const QString& title, const QColor& background, const QColor& border,
                 qreal borderWidth);

    const QColor& background() const { return background_; }
    const QColor& border() const { return border_; }
    qreal borderWidth() const { return borderWidth_; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QColor background_;
    QColor border_;
    qreal borderWidth_ = 0;
};
