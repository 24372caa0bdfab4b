// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QPushButton>

namespace lexmira {

// The view's button: a filled rounded rectangle with a white title and a faint shadow below.
// Reached with Tab, it shows a ring inside its edge; Space, Return and Enter press it. Screen
// readers read it as a push button named by its title, busy while setBusy(true) holds.
class FlatButton final : public QPushButton {
    Q_OBJECT

public:
    static constexpr int height = 32;
    static constexpr qreal cornerRadius = 3.5;
    // The keyboard focus ring: this far inside the edge, this wide.
    static constexpr qreal focusRingInset = 2.5;
    static constexpr qreal focusRingWidth = 1.5;

    FlatButton(const QString& title, int width, const QColor& background,
               QWidget* parent = nullptr);

    // Changes title, fill and border; the title stays white.
    void setLook(const QString& title, const QColor& background, const QColor& border,
                 qreal borderWidth);
    // Whether the button waits for what it started; assistive technologies are told.
    void setBusy(bool busy);
    bool isBusy() const { return busy_; }
    // Whether the focus ring shows: the button has the focus and got it from the keyboard.
    bool showsFocusRing() const { return focusRing_; }

    const QColor& background() const { return background_; }
    const QColor& border() const { return border_; }
    qreal borderWidth() const { return borderWidth_; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    bool focusNextPrevChild(bool next) override;

private:
    void setFocusRing(bool shown);

    QColor background_;
    QColor border_;
    qreal borderWidth_ = 0;
    bool busy_ = false;
    bool focusRing_ = false;
};

} // namespace lexmira
