// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QList>
#include <QPointer>
#include <QWidget>

namespace lexmira {

// One panel of the view: a background of one colour and the widgets on it. Some of those may be
// drawn for the eye only, pieces of a text that another widget speaks whole; assistive
// technologies do not see them among the panel's children. Main thread only.
class Panel final : public QWidget {
    Q_OBJECT

public:
    Panel(const QColor& background, QWidget* parent);

    // Leaves child, a child widget of this panel, out of what screen readers read.
    void setDrawnOnly(QWidget* child);
    bool isDrawnOnly(const QWidget* child) const;

private:
    QList<QPointer<QWidget>> drawnOnly_;
};

} // namespace lexmira
