// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "EnableExtensionView/FlatButton.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QFocusEvent>
#include <QGraphicsDropShadowEffect>
#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>

namespace lexmira {

namespace {

// What assistive technologies see of a FlatButton: a push button named by its title that can
// be pressed, and busy while it waits.
class FlatButtonAccessible final : public QAccessibleWidget {
public:
    explicit FlatButtonAccessible(FlatButton* button)
        : QAccessibleWidget(button, QAccessible::Button)
    {
    }

    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.busy = button()->isBusy();
        return state;
    }

    QString text(QAccessible::Text t) const override
    {
        if (t == QAccessible::Name && !button()->accessibleName().isEmpty())
            return button()->accessibleName();
        if (t == QAccessible::Name)
            return button()->text();
        return QAccessibleWidget::text(t);
    }

    QStringList actionNames() const override
    {
        QStringList names = QAccessibleWidget::actionNames();
        if (button()->isEnabled())
            names.prepend(pressAction());
        return names;
    }

    void doAction(const QString& actionName) override
    {
        if (actionName != pressAction()) {
            QAccessibleWidget::doAction(actionName);
            return;
        }
        // Pressed from the event loop: what the press starts (an alert, say) must not run inside
        // the assistive technology's call.
        if (button()->isEnabled())
            button()->animateClick();
    }

private:
    FlatButton* button() const { return static_cast<FlatButton*>(widget()); }
};

QAccessibleInterface* accessibleFlatButton(const QString& className, QObject* object)
{
    if (className == QLatin1String(FlatButton::staticMetaObject.className()))
        if (auto* button = qobject_cast<FlatButton*>(object))
            return new FlatButtonAccessible(button);
    return nullptr;
}

} // namespace

FlatButton::FlatButton(const QString& title, int width, const QColor& background, QWidget* parent)
    : QPushButton(title, parent)
    , background_(background)
{
    static const bool accessible = (QAccessible::installFactory(accessibleFlatButton), true);
    Q_UNUSED(accessible);

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

void FlatButton::setBusy(bool busy)
{
    if (busy == busy_)
        return;
    busy_ = busy;
    QAccessible::State changed;
    changed.busy = true;
    QAccessibleStateChangeEvent event(this, changed);
    QAccessible::updateAccessibility(&event);
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
    if (focusRing_) {
        // The pen straddles the path: its outer edge lies focusRingInset inside the button's.
        const qreal ringInset = focusRingInset + focusRingWidth / 2;
        painter.setPen(QPen(Qt::white, focusRingWidth));
        painter.drawRoundedRect(
            QRectF(rect()).adjusted(ringInset, ringInset, -ringInset, -ringInset), cornerRadius - 1,
            cornerRadius - 1);
    }
    painter.setPen(Qt::white);
    painter.setFont(font());
    painter.drawText(rect(), Qt::AlignCenter, text());
}

void FlatButton::keyPressEvent(QKeyEvent* event)
{
    // Outside dialogs a push button ignores Return and Enter; this one takes both, like Space.
    if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) &&
        (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier) {
        if (isEnabled())
            animateClick();
        event->accept();
        return;
    }
    QPushButton::keyPressEvent(event);
}

void FlatButton::focusInEvent(QFocusEvent* event)
{
    // Only focus that the keyboard moved here is shown; a click or the window's activation
    // gives none.
    const Qt::FocusReason reason = event->reason();
    setFocusRing(reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason ||
                 reason == Qt::ShortcutFocusReason);
    QPushButton::focusInEvent(event);
}

void FlatButton::focusOutEvent(QFocusEvent* event)
{
    setFocusRing(false);
    QPushButton::focusOutEvent(event);
}

bool FlatButton::focusNextPrevChild(bool next)
{
    const bool handled = QPushButton::focusNextPrevChild(next);
    // Tab with no other widget to reach leaves the focus here without a focus event; the
    // keyboard moved it all the same.
    if (hasFocus())
        setFocusRing(true);
    return handled;
}

void FlatButton::setFocusRing(bool shown)
{
    if (shown == focusRing_)
        return;
    focusRing_ = shown;
    update();
}

} // namespace lexmira
