// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "EnableExtensionView/TextView.h"
#include "ViewFixture.h"

#include <QGuiApplication>
#include <QScreen>
#include <QWindow>

namespace {

using namespace std::chrono_literals;
using test::ViewFixture;

// The view on a real X display, read back from the X server.
class Rendering : public ViewFixture, public ::testing::WithParamInterface<std::tuple<bool, bool>> {
protected:
    bool dark() const { return std::get<0>(GetParam()); }
    bool enabled() const { return std::get<1>(GetParam()); }

    QImage shoot(QWidget& view)
    {
        test::spin(300ms); // mapped and painted
        return view.screen()
            ->grabWindow(view.winId())
            .toImage()
            .convertToFormat(QImage::Format_RGB32);
    }

    static QColor at(const QImage& image, QPoint point) { return QColor(image.pixel(point)); }

    static bool near(const QColor& a, const QColor& b, int tolerance = 3)
    {
        return std::abs(a.red() - b.red()) <= tolerance &&
               std::abs(a.green() - b.green()) <= tolerance &&
               std::abs(a.blue() - b.blue()) <= tolerance;
    }

    // Where a text view draws, in its own coordinates: the bounds of its non-transparent pixels.
    static QRect inkBounds(QWidget& text)
    {
        const QImage alone = text.grab().toImage().convertToFormat(QImage::Format_ARGB32);
        QRect bounds;
        for (int y = 0; y < alone.height(); ++y)
            for (int x = 0; x < alone.width(); ++x)
                if (qAlpha(alone.pixel(x, y)) > 0)
                    bounds |= QRect(x, y, 1, 1);
        return QRect(bounds.topLeft() / text.devicePixelRatio(),
                     bounds.size() / text.devicePixelRatio());
    }

    // Pixels inside rect that differ from background: what was drawn there.
    static int inkIn(const QImage& image, const QRect& rect, const QColor& background)
    {
        int ink = 0;
        for (int y = rect.top(); y <= rect.bottom(); ++y)
            for (int x = rect.left(); x <= rect.right(); ++x)
                ink += !near(QColor(image.pixel(x, y)), background, 24);
        return ink;
    }
};

TEST_P(Rendering, PanelButtonsImagesAndTexts)
{
    ASSERT_EQ(QGuiApplication::platformName(), QStringLiteral("xcb"));
    appearance.setDark(dark());
    bridge.enabled = enabled();
    sharedData->userInfo.setValue(UserInfo{"u", false, false, "c"});
    const auto view = makeView();
    view->show();
    ASSERT_TRUE(test::waitUntil([&] {
        return !(enabled() ? view->extensionEnabledPanel() : view->enableExtensionPanel())
                    ->isHidden();
    }));
    const QImage image = shoot(*view);
    ASSERT_EQ(image.size(), QSize(550, 367) * view->devicePixelRatio());

    const ColorScheme scheme = dark() ? ColorScheme::dark() : ColorScheme::light();
    EXPECT_TRUE(near(at(image, {5, 5}), scheme.panel)) << at(image, {5, 5}).name().toStdString();
    EXPECT_TRUE(near(at(image, {300, 20}), scheme.panel));

    QWidget* panel = enabled() ? view->extensionEnabledPanel() : view->enableExtensionPanel();
    FlatButton* button =
        enabled() ? view->openSafariButton() : view->openSafariExtensionPreferencesButton();
    const QRect buttonRect = button->geometry();
    EXPECT_EQ(buttonRect.height(), 32);
    // The fill, away from the rounded corners and the white title.
    EXPECT_TRUE(near(at(image, buttonRect.topLeft() + QPoint(5, 16)), scheme.button))
        << at(image, buttonRect.topLeft() + QPoint(5, 16)).name().toStdString();
    // The title is drawn in white: far lighter than the fill.
    int light = 0;
    for (int x = buttonRect.left(); x <= buttonRect.right(); ++x)
        for (int y = buttonRect.top() + 6; y < buttonRect.bottom() - 6; ++y)
            light += at(image, {x, y}).lightness() > 200;
    EXPECT_GT(light, 40);

    // Every image holds a picture; every text is drawn inside its own box, and no text runs
    // under an image, the animation or the button.
    const auto children = panel->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
    for (QLabel* label : panel->findChildren<QLabel*>(QString(), Qt::FindDirectChildrenOnly)) {
        const QRect box = label->geometry();
        auto* text = qobject_cast<TextView*>(label);
        if (!text) {
            EXPECT_GT(inkIn(image, box, scheme.panel), box.width() * box.height() / 8);
            continue;
        }
        EXPECT_GT(inkIn(image, box, scheme.panel), 10) << text->text().toStdString();
        EXPECT_TRUE(panel->rect().contains(box)) << text->text().toStdString();
        const QRect glyphs = inkBounds(*text).translated(box.topLeft());
        for (QWidget* other : children) {
            if (!qobject_cast<TextView*>(other)) {
                EXPECT_FALSE(glyphs.intersects(other->geometry()))
                    << text->text().toStdString() << " runs under "
                    << other->metaObject()->className();
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(BothPanelsInBothAppearances, Rendering,
                         ::testing::Combine(::testing::Bool(), ::testing::Bool()),
                         [](const auto& info) {
                             return std::string(std::get<0>(info.param) ? "Dark" : "Light") +
                                    (std::get<1>(info.param) ? "Enabled" : "Disabled");
                         });

} // namespace
