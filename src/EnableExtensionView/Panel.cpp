// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "EnableExtensionView/Panel.h"

#include <QAccessible>
#include <QAccessibleWidget>

#include <algorithm>

namespace lexmira {

namespace {

// A panel as assistive technologies see it: its child widgets in creation order, less those
// drawn only.
class PanelAccessible final : public QAccessibleWidget {
public:
    explicit PanelAccessible(Panel* panel)
        : QAccessibleWidget(panel, QAccessible::Pane)
    {
    }

    int childCount() const override { return int(spokenChildren().size()); }

    QAccessibleInterface* child(int index) const override
    {
        const QList<QWidget*> children = spokenChildren();
        if (index < 0 || index >= children.size())
            return nullptr;
        return QAccessible::queryAccessibleInterface(children[index]);
    }

    int indexOfChild(const QAccessibleInterface* child) const override
    {
        if (!child)
            return -1;
        return int(spokenChildren().indexOf(qobject_cast<QWidget*>(child->object())));
    }

private:
    QList<QWidget*> spokenChildren() const
    {
        const auto* panel = static_cast<const Panel*>(widget());
        QList<QWidget*> spoken;
        for (QObject* object : panel->children()) {
            auto* child = qobject_cast<QWidget*>(object);
            if (child && !child->isWindow() && !panel->isDrawnOnly(child))
                spoken << child;
        }
        return spoken;
    }
};

QAccessibleInterface* accessiblePanel(const QString& className, QObject* object)
{
    if (className == QLatin1String(Panel::staticMetaObject.className()))
        if (auto* panel = qobject_cast<Panel*>(object))
            return new PanelAccessible(panel);
    return nullptr;
}

} // namespace

Panel::Panel(const QColor& background, QWidget* parent)
    : QWidget(parent)
{
    static const bool accessible = (QAccessible::installFactory(accessiblePanel), true);
    Q_UNUSED(accessible);

    setAutoFillBackground(true);
    QPalette palette = this->palette();
    palette.setColor(QPalette::Window, background);
    setPalette(palette);
}

void Panel::setDrawnOnly(QWidget* child)
{
    if (child && child->parentWidget() == this && !isDrawnOnly(child))
        drawnOnly_ << child;
}

bool Panel::isDrawnOnly(const QWidget* child) const
{
    return std::any_of(drawnOnly_.begin(), drawnOnly_.end(),
                       [child](const QPointer<QWidget>& drawn) { return drawn == child; });
}

} // namespace lexmira
