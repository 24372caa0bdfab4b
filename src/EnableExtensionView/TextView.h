// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QLabel>
#include <QTextDocument>

namespace lexmira {

// Non-editable text on a clear background, sized to its text, with extra space between lines.
// Like a text container, it pads every line by a few pixels left and right; the layout of the
// panels counts on that padding. It stays a label for accessibility, so screen readers read it
// as static text.
class TextView final : public QLabel {
    Q_OBJECT

public:
    static constexpr int lineFragmentPadding = 5;

    TextView(const QString& text, const QFont& font, const QColor& color, qreal lineSpacing,
             Qt::Alignment alignment = Qt::AlignLeft, QWidget* parent = nullptr);

    // The rectangle the laid-out text uses, trailing blanks included.
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QTextDocument document_;
    QColor color_;
};

} // namespace lexmira
