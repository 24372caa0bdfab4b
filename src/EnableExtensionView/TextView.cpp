// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "EnableExtensionView/TextView.h"

#include <QAbstractTextDocumentLayout>
#include <QPainter>
#include <QTextBlock>
#include <QTextCursor>

#include <cmath>

namespace lexmira {

TextView::TextView(const QString& text, const QFont& font, const QColor& color, qreal lineSpacing,
                   Qt::Alignment alignment, QWidget* parent)
    : QLabel(text, parent)
    , color_(color)
{
    setFont(font);
    setAccessibleName(text.simplified());
    setAttribute(Qt::WA_TranslucentBackground);
    setTextInteractionFlags(Qt::NoTextInteraction);

    document_.setDocumentMargin(0);
    document_.setDefaultFont(font);
    QTextOption option = document_.defaultTextOption();
    option.setFlags(option.flags() | QTextOption::IncludeTrailingSpaces);
    option.setWrapMode(QTextOption::NoWrap);
    option.setAlignment(alignment);
    document_.setDefaultTextOption(option);
    document_.setPlainText(text);

    QTextCursor cursor(&document_);
    cursor.select(QTextCursor::Document);
    QTextBlockFormat block;
    block.setLineHeight(lineSpacing, QTextBlockFormat::LineDistanceHeight);
    block.setAlignment(alignment);
    cursor.mergeBlockFormat(block);

    // Centred lines need the width of the widest line to centre in.
    document_.setTextWidth(document_.idealWidth());
    resize(sizeHint());
}

QSize TextView::sizeHint() const
{
    const QSizeF size = document_.size();
    return {int(std::ceil(document_.idealWidth())) + 2 * lineFragmentPadding,
            int(std::ceil(size.height()))};
}

void TextView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.translate(lineFragmentPadding, 0);
    QAbstractTextDocumentLayout::PaintContext context;
    context.palette = palette();
    context.palette.setColor(QPalette::Text, color_);
    document_.documentLayout()->draw(&painter, context);
}

} // namespace lexmira
