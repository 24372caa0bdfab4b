// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "EnableExtensionView/TextView.h"
#include "ViewFixture.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QLabel>
#include <QLocale>
#include <QScreen>
#include <QTranslator>
#include <QWindow>

namespace lexmira {

namespace {

using namespace std::chrono_literals;
using test::ViewFixture;

// The view on a real X display, read back from the X server.
class RenderingFixture : public ViewFixture {
protected:

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

    // Every image holds a picture; every text is drawn inside its own box, and no text runs
    // under an image, the animation or the button.
    static void expectTextsInPlace(QWidget* panel, const QImage& image, const QColor& background)
    {
        const auto children = panel->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
        for (QLabel* label : panel->findChildren<QLabel*>(QString(), Qt::FindDirectChildrenOnly)) {
            const QRect box = label->geometry();
            auto* text = qobject_cast<TextView*>(label);
            if (!text) {
                EXPECT_GT(inkIn(image, box, background), box.width() * box.height() / 8);
                continue;
            }
            EXPECT_GT(inkIn(image, box, background), 10) << text->text().toStdString();
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
};

// Light or dark, enabled or not, with the browser the extension's side reports ("" for none).
class Rendering : public RenderingFixture,
                  public ::testing::WithParamInterface<std::tuple<bool, bool, const char*>> {
protected:
    bool dark() const { return std::get<0>(GetParam()); }
    bool enabled() const { return std::get<1>(GetParam()); }
    QString browser() const { return QString::fromUtf8(std::get<2>(GetParam())); }
};

TEST_P(Rendering, PanelButtonsImagesAndTexts)
{
    ASSERT_EQ(QGuiApplication::platformName(), QStringLiteral("xcb"));
    appearance.setDark(dark());
    bridge.enabled = enabled();
    bridge.browserName = browser();
    sharedData->userInfo.setValue(UserInfo{"u", false, false, "c"});
    const auto view = makeView();
    view->show();
    ASSERT_TRUE(test::waitUntil([&] {
        return !(enabled() ? view->extensionEnabledPanel() : view->enableExtensionPanel())
                    ->isHidden() &&
               !bridge.browserNameQueries.empty();
    }));
    ASSERT_TRUE(test::waitUntil([&] { return view->browserName() == browser(); }));
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

    expectTextsInPlace(panel, image, scheme.panel);
}

TEST_P(Rendering, TheBrowserInUseIsNamedAndShown)
{
    appearance.setDark(dark());
    bridge.enabled = enabled();
    bridge.browserName = browser();
    const auto view = makeView();
    view->show();
    ASSERT_TRUE(test::waitUntil([&] {
        return !(enabled() ? view->extensionEnabledPanel() : view->enableExtensionPanel())
                    ->isHidden() &&
               view->browserName() == browser();
    }));
    const QImage image = shoot(*view);
    const ColorScheme scheme = dark() ? ColorScheme::dark() : ColorScheme::light();

    if (enabled()) {
        // Every word as written, the browser's name where the text names Safari.
        const QString expected =
            browser().isEmpty()
                ? QStringLiteral("If you don\u2019t see Lexmira in your \nSafari toolbar, try "
                                 "restarting Safari.")
                : QStringLiteral("If you don\u2019t see Lexmira in your \n%1 toolbar, try "
                                 "restarting %1.")
                      .arg(browser());
        TextView* body = view->enabledBody();
        ASSERT_TRUE(body);
        EXPECT_EQ(body->text(), expected);
        EXPECT_EQ(body->parentWidget(), view->extensionEnabledPanel());
        // The renamed text is what is on the screen: drawn where it stands, above the button,
        // and alone in its box.
        const QRect box = body->geometry();
        EXPECT_GT(inkIn(image, box, scheme.panel), 200);
        EXPECT_LT(box.bottom(), view->openSafariButton()->geometry().top());
        EXPECT_EQ(view->extensionEnabledPanel()->findChildren<TextView*>().size(), 2)
            << "the title and one body text";
        EXPECT_TRUE(view->extensionEnabledPanel()->rect().contains(box));
        return;
    }
    // The extensions page of the browser in use; the Chromium family's when none is named.
    AnimationView* animation = view->animation();
    ASSERT_TRUE(animation);
    const QString variant = browser() == QLatin1String("Firefox") ? QStringLiteral("Firefox")
                                                                  : QStringLiteral("Chromium");
    EXPECT_TRUE(animation->fileName().endsWith(
        (dark() ? QStringLiteral("EnableLexmiraAnimationDark")
                : QStringLiteral("EnableLexmiraAnimationLight")) +
        variant + QStringLiteral(".gif")))
        << animation->fileName().toStdString();
    EXPECT_TRUE(animation->isRunning());
    EXPECT_EQ(view->enableExtensionPanel()->findChildren<AnimationView*>().size(), 1);
    const QRect box = animation->geometry();
    EXPECT_GT(inkIn(image, box, scheme.panel), box.width() * box.height() / 8);
}

INSTANTIATE_TEST_SUITE_P(BothPanelsInBothAppearancesForEachBrowser, Rendering,
                         ::testing::Combine(::testing::Bool(), ::testing::Bool(),
                                            ::testing::Values("", "Chromium", "Firefox")),
                         [](const auto& info) {
                             const std::string browser = std::get<2>(info.param);
                             return std::string(std::get<0>(info.param) ? "Dark" : "Light") +
                                    (std::get<1>(info.param) ? "Enabled" : "Disabled") +
                                    (browser.empty() ? "NoBrowserNamed" : browser);
                         });

// The panels in German, as a German-speaking user sees them: every text is translated, fits its
// place, and the step numbers still stand on the lines of their steps.
class GermanRendering : public RenderingFixture,
                        public ::testing::WithParamInterface<std::tuple<bool, bool>> {
protected:
    bool dark() const { return std::get<0>(GetParam()); }
    bool enabled() const { return std::get<1>(GetParam()); }

    void SetUp() override
    {
        ASSERT_TRUE(translator.load(QLocale(QLocale::German, QLocale::Germany),
                                    QStringLiteral("lexmira"), QStringLiteral("_"),
                                    test::builtBundleDir() + QStringLiteral("/translations")));
        QCoreApplication::installTranslator(&translator);
    }
    void TearDown() override { QCoreApplication::removeTranslator(&translator); }

    // The rows where a text view draws, grouped into its lines: [first, last] of each band of
    // rows with ink, in its own coordinates.
    static std::vector<std::pair<int, int>> inkLines(QWidget& text)
    {
        const QImage alone = text.grab().toImage().convertToFormat(QImage::Format_ARGB32);
        std::vector<std::pair<int, int>> lines;
        bool inLine = false;
        for (int y = 0; y < alone.height(); ++y) {
            bool ink = false;
            for (int x = 0; x < alone.width() && !ink; ++x)
                ink = qAlpha(alone.pixel(x, y)) > 0;
            if (ink && !inLine)
                lines.push_back({y, y});
            if (ink)
                lines.back().second = y;
            inLine = ink;
        }
        const qreal ratio = text.devicePixelRatio();
        for (auto& [first, last] : lines) {
            first = int(first / ratio);
            last = int(last / ratio);
        }
        return lines;
    }

    QTranslator translator;
};

TEST_P(GermanRendering, EveryTextIsTranslatedAndFitsItsPlace)
{
    appearance.setDark(dark());
    bridge.enabled = enabled();
    bridge.browserName = QStringLiteral("Chromium");
    sharedData->userInfo.setValue(UserInfo{"u", false, false, "c"});
    const auto view = makeView();
    view->show();
    QWidget* panel = enabled() ? view->extensionEnabledPanel() : view->enableExtensionPanel();
    ASSERT_TRUE(test::waitUntil([&] {
        return !panel->isHidden() && view->browserName() == QLatin1String("Chromium");
    }));
    const QImage image = shoot(*view);
    const ColorScheme scheme = dark() ? ColorScheme::dark() : ColorScheme::light();

    std::vector<QString> texts;
    for (TextView* text : panel->findChildren<TextView*>())
        texts.push_back(text->text());
    FlatButton* button =
        enabled() ? view->openSafariButton() : view->openSafariExtensionPreferencesButton();
    if (enabled()) {
        EXPECT_EQ(texts, (std::vector<QString>{
                             QStringLiteral("Alles bereit! "),
                             QStringLiteral("Wenn du Lexmira nicht in der Symbolleiste \nvon "
                                            "Chromium siehst, starte Chromium neu.")}));
        EXPECT_EQ(button->text(), QStringLiteral("Verstanden"));
    } else {
        EXPECT_EQ(texts, (std::vector<QString>{QStringLiteral("1\n2"), QStringLiteral(".\n."),
                                               QStringLiteral("Öffne Einstellungen\nSetze das "
                                                              "Häkchen\n"),
                                               QStringLiteral("\n\nzur Freigabe ")}));
        EXPECT_EQ(button->text(), QStringLiteral("Zum Aktivieren Einstellungen öffnen"));
    }
    expectTextsInPlace(panel, image, scheme.panel);

    // The title stays inside the button, with room to spare on each side.
    const int titleWidth = button->fontMetrics().horizontalAdvance(button->text());
    EXPECT_LE(titleWidth, button->width() - 2 * 8) << button->text().toStdString();

    if (enabled())
        return;
    // The steps: the numbers, their dots and both step lines share their lines.
    const auto pieces = panel->findChildren<TextView*>();
    ASSERT_EQ(pieces.size(), 4);
    for (TextView* piece : pieces)
        EXPECT_EQ(piece->y(), pieces.front()->y()) << piece->text().toStdString();
    const auto numbers = inkLines(*pieces[0]);
    const auto steps = inkLines(*pieces[2]);
    const auto tail = inkLines(*pieces[3]);
    ASSERT_EQ(numbers.size(), 2u);
    ASSERT_EQ(steps.size(), 2u);
    ASSERT_EQ(tail.size(), 1u);
    for (std::size_t line = 0; line < 2; ++line) {
        // Digits sit on the baseline of their step; the step's own ink reaches above and below.
        EXPECT_LE(steps[line].first, numbers[line].first) << "line " << line;
        EXPECT_GE(steps[line].second, numbers[line].second - 1) << "line " << line;
    }
    EXPECT_GT(tail.front().first, steps[1].second) << "the tail is the third line";
}

INSTANTIATE_TEST_SUITE_P(BothPanelsInBothAppearances, GermanRendering,
                         ::testing::Combine(::testing::Bool(), ::testing::Bool()),
                         [](const auto& info) {
                             return std::string(std::get<0>(info.param) ? "Dark" : "Light") +
                                    (std::get<1>(info.param) ? "Enabled" : "Disabled");
                         });


// A frame redraws only what changed from the one before; what the X server shows must still be
// the animation's frame, pixel for pixel, wherever the loop stands, in its first loop (decoded as it
// plays) and in the next (replayed from what the first kept).
class AnimationRendering : public RenderingFixture {};

TEST_F(AnimationRendering, WhatIsOnScreenIsTheAnimationsFrameAtEveryPointOfItsLoops)
{
    ASSERT_EQ(QGuiApplication::platformName(), QStringLiteral("xcb"));
    const auto view = showAnimation();
    ASSERT_TRUE(view);
    AnimationView* animation = view->animation();
    ASSERT_EQ(view->devicePixelRatioF(), 1.0);
    // Stops at different points of the five-second loop, in the moves and in the rests, then at
    // others of the next loop.
    for (const auto playFor :
         {150ms, 260ms, 90ms, 700ms, 330ms, 1200ms, 410ms, 2100ms, 380ms, 1500ms, 240ms}) {
        animation->setPaused(false);
        test::spin(playFor);
        animation->setPaused(true);
        const QImage frame = animation->currentFrame().convertToFormat(QImage::Format_RGB32);
        const QImage screen = shoot(*view).copy(animation->geometry());
        ASSERT_EQ(screen.size(), frame.size());
        int differing = 0;
        for (int y = 0; y < frame.height(); ++y)
            for (int x = 0; x < frame.width(); ++x)
                differing += !near(QColor(frame.pixel(x, y)), QColor(screen.pixel(x, y)), 2);
        EXPECT_EQ(differing, 0) << "frame " << animation->currentFrameNumber();
    }
}

} // namespace

} // namespace lexmira
