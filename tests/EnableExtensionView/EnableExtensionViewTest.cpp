// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "EnableExtensionView/TextView.h"
#include "ViewFixture.h"

#include <QAccessible>
#include <QPaintEvent>
#include <QLabel>
#include <QPointer>
#include <QTest>

namespace lexmira {

namespace {

using namespace std::chrono_literals;
using Records = std::vector<std::pair<std::string, std::string>>;
using test::ViewFixture;

const UserInfo signedIn{"u-1", false, false, "c-1"};
const UserInfo anonymous{"anon-1", false, true, "c-2"};

template <class T>
QList<T*> childrenOf(QWidget* panel)
{
    return panel->findChildren<T*>(QString(), Qt::FindDirectChildrenOnly);
}

QStringList textsOf(QWidget* panel)
{
    QStringList texts;
    for (auto* text : childrenOf<TextView>(panel))
        texts << text->text();
    return texts;
}

class ViewTest : public ViewFixture {};

TEST_F(ViewTest, BothPanelsAreHiddenUntilTheStateIsKnown)
{
    const auto view = makeView();
    EXPECT_EQ(view->size(), QSize(550, 367));
    EXPECT_TRUE(view->extensionEnabledPanel()->isHidden());
    EXPECT_TRUE(view->enableExtensionPanel()->isHidden());
    EXPECT_TRUE(view->openSafariButton()->isEnabled());
    EXPECT_TRUE(view->openSafariExtensionPreferencesButton()->isEnabled());
    EXPECT_EQ(view->extensionEnabledPanel()->geometry(), QRect(0, 0, 550, 367));
    EXPECT_EQ(view->enableExtensionPanel()->geometry(), QRect(0, 0, 550, 367));
}

TEST_F(ViewTest, WithoutADarkDesktopTheLightSchemeIsUsed)
{
    const auto view = makeView();
    EXPECT_EQ(view->colorScheme(), ColorScheme::light());
    EXPECT_EQ(view->enableExtensionPanel()->palette().color(QPalette::Window),
              QColor(0xFF, 0xFF, 0xFF));
}

TEST_F(ViewTest, EnabledPanelHoldsTheTextsExactly)
{
    const auto view = makeView();
    EXPECT_EQ(textsOf(view->extensionEnabledPanel()),
              (QStringList{QString::fromUtf8("You\u2019re all set! "),
                           QString::fromUtf8("If you don\u2019t see Lexmira in your \nSafari "
                                             "toolbar, try restarting Safari.")}));
    EXPECT_EQ(view->openSafariButton()->text(), QStringLiteral("Ok, got it"));
    EXPECT_EQ(view->openSafariButton()->size(), QSize(96, 32));
}

TEST_F(ViewTest, EnablePanelHoldsTheStepsExactly)
{
    const auto view = makeView();
    EXPECT_EQ(textsOf(view->enableExtensionPanel()),
              (QStringList{QStringLiteral("1\n2"), QStringLiteral(".\n."),
                           QStringLiteral("Open settings\nClick checkbox\n"),
                           QStringLiteral("\n\nto grant permission ")}));
    EXPECT_EQ(view->openSafariExtensionPreferencesButton()->text(),
              QStringLiteral("Open settings to enable Lexmira"));
    EXPECT_EQ(view->openSafariExtensionPreferencesButton()->size(), QSize(244, 32));
}

TEST_F(ViewTest, EnabledPanelLayout)
{
    const auto view = makeView();
    auto* panel = view->extensionEnabledPanel();
    const auto images = childrenOf<QLabel>(panel);
    QList<QLabel*> marks;
    for (auto* label : images)
        if (!qobject_cast<TextView*>(label))
            marks << label;
    ASSERT_EQ(marks.size(), 2);
    const QRect mark = marks[0]->geometry();
    const QRect done = marks[1]->geometry();
    EXPECT_EQ(mark, QRect(48, 72, 56, 56));
    EXPECT_FALSE(marks[0]->pixmap().isNull());
    const auto texts = childrenOf<TextView>(panel);
    const QRect title = texts[0]->geometry();
    const QRect body = texts[1]->geometry();
    EXPECT_EQ(title.topLeft(), QPoint(48, 72 + 56 + 32));
    EXPECT_EQ(done, QRect(title.right() + 1, 72 + 56 + 32, 32, 32));
    EXPECT_FALSE(marks[1]->pixmap().isNull());
    EXPECT_EQ(body.topLeft(), QPoint(48, title.bottom() + 1 + 22));
    EXPECT_EQ(view->openSafariButton()->geometry().topLeft(), QPoint(48, body.bottom() + 1 + 34));
}

TEST_F(ViewTest, EnablePanelLayout)
{
    bridge.enabled = false;
    const auto view = makeView();
    auto* panel = view->enableExtensionPanel();
    QList<QLabel*> images;
    for (auto* label : childrenOf<QLabel>(panel))
        if (!qobject_cast<TextView*>(label))
            images << label;
    ASSERT_EQ(images.size(), 1) << "the warning mark";
    EXPECT_EQ(images[0]->geometry(), QRect(48, 71, 46, 41));
    EXPECT_FALSE(images[0]->pixmap().isNull());
    const auto texts = childrenOf<TextView>(panel);
    ASSERT_EQ(texts.size(), 4);
    const int top = 71 + 41 + 47;
    EXPECT_EQ(texts[0]->geometry().topLeft(), QPoint(48, top));
    EXPECT_EQ(texts[1]->geometry().topLeft(), QPoint(texts[0]->geometry().right() + 1 - 10, top));
    EXPECT_EQ(texts[2]->geometry().topLeft(), QPoint(texts[1]->geometry().right() + 1 - 6, top));
    EXPECT_EQ(texts[3]->geometry().topLeft(), QPoint(texts[2]->x() + 2, top));
    EXPECT_EQ(view->openSafariExtensionPreferencesButton()->geometry().topLeft(),
              QPoint(48, texts[2]->geometry().bottom() + 1 + 41));
    // The animation, at half its 464 × 536 size, in the bottom-right corner, playing once the
    // panel is on screen.
    const auto animations = childrenOf<AnimationView>(panel);
    ASSERT_EQ(animations.size(), 1);
    EXPECT_EQ(animations[0]->geometry(), QRect(550 - 232, 367 - 268, 232, 268));
    EXPECT_FALSE(animations[0]->isRunning());
    view->show();
    ASSERT_TRUE(test::waitUntil([&] { return panel->isVisible(); }));
    EXPECT_TRUE(animations[0]->isRunning());
}

TEST_F(ViewTest, TextIsNeverClipped)
{
    const auto view = makeView();
    for (QWidget* panel : {view->extensionEnabledPanel(), view->enableExtensionPanel()})
        for (auto* text : childrenOf<TextView>(panel)) {
            EXPECT_GE(text->width(), text->sizeHint().width()) << text->text().toStdString();
            EXPECT_GE(text->height(), text->sizeHint().height()) << text->text().toStdString();
            EXPECT_TRUE(panel->rect().contains(text->geometry())) << text->text().toStdString();
            const QFontMetrics metrics(text->font());
            for (const QString& line : text->text().split(u'\n'))
                EXPECT_GE(text->width(), metrics.horizontalAdvance(line.trimmed()))
                    << line.toStdString();
        }
}

TEST_F(ViewTest, EnabledExtensionShowsTheEnabledPanel)
{
    bridge.enabled = true;
    const auto view = makeView();
    ASSERT_TRUE(test::waitUntil([&] { return !view->extensionEnabledPanel()->isHidden(); }));
    EXPECT_TRUE(view->enableExtensionPanel()->isHidden());
}

TEST_F(ViewTest, DisabledExtensionShowsTheEnablePanel)
{
    bridge.enabled = false;
    const auto view = makeView();
    ASSERT_TRUE(test::waitUntil([&] { return !view->enableExtensionPanel()->isHidden(); }));
    EXPECT_TRUE(view->extensionEnabledPanel()->isHidden());
}

TEST_F(ViewTest, StateErrorIsLoggedOnceAndShownAsDisabled)
{
    bridge.enabled = false;
    for (int i = 0; i < 3; ++i)
        bridge.stateErrors.push_back({QStringLiteral("org.freedesktop.DBus.Error.ServiceUnknown"),
                                      QStringLiteral("The name is not activatable")});
    const auto view = makeView(50ms);
    ASSERT_TRUE(test::waitUntil([&] { return bridge.stateQueries.size() >= 4; }));
    EXPECT_FALSE(view->enableExtensionPanel()->isHidden());
    ASSERT_TRUE(server.waitForRequests(1));
    test::spin(300ms);
    EXPECT_EQ(test::logRecords(server),
              (Records{{"companion.getExtensionState",
                        "Could not get extension state: The name is not activatable"}}));
}

TEST_F(ViewTest, NilStateIsLoggedOnceAsNilResultAndShownAsDisabled)
{
    bridge.enabled = std::nullopt;
    const auto view = makeView(50ms);
    ASSERT_TRUE(test::waitUntil([&] { return bridge.stateQueries.size() >= 4; }));
    EXPECT_FALSE(view->enableExtensionPanel()->isHidden());
    ASSERT_TRUE(server.waitForRequests(1));
    test::spin(300ms);
    EXPECT_EQ(test::logRecords(server), (Records{{"companion.getExtensionState",
                                                  "Could not get extension state: nil result"}}));
}

TEST_F(ViewTest, EnablingTheExtensionSwitchesPanelsWithinAboutASecond)
{
    bridge.enabled = false;
    const auto view = makeView();
    ASSERT_TRUE(test::waitUntil([&] { return !view->enableExtensionPanel()->isHidden(); }));
    bridge.enabled = true;
    ASSERT_TRUE(
        test::waitUntil([&] { return !view->extensionEnabledPanel()->isHidden(); }, 1500ms));
    EXPECT_TRUE(view->enableExtensionPanel()->isHidden());
}

TEST_F(ViewTest, PollsOnceASecond)
{
    const auto view = makeView();
    test::spin(5s);
    EXPECT_GE(bridge.stateQueries.size(), 5u);
    EXPECT_LE(bridge.stateQueries.size(), 6u);
    EXPECT_EQ(bridge.stateQueries.front(), test::extensionId);
}

TEST_F(ViewTest, AppearanceChangeRebuildsDarkPanelsOverTheOldOnesAndPollsOnceMore)
{
    bridge.enabled = false;
    const auto view = makeView();
    ASSERT_TRUE(test::waitUntil([&] { return !view->enableExtensionPanel()->isHidden(); }));
    QWidget* oldPanel = view->enableExtensionPanel();

    appearance.setDark(true);
    EXPECT_EQ(view->colorScheme(), ColorScheme::dark());
    EXPECT_NE(view->enableExtensionPanel(), oldPanel);
    EXPECT_EQ(oldPanel->parent(), view.get()) << "earlier panels stay beneath";
    EXPECT_TRUE(view->enableExtensionPanel()->isHidden()) << "new panels start hidden";
    EXPECT_EQ(view->enableExtensionPanel()->palette().color(QPalette::Window),
              QColor(0x1C, 0x1D, 0x23));
    const auto children = view->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
    EXPECT_EQ(children.size(), 4);
    EXPECT_EQ(children.last(), view->enableExtensionPanel()) << "the new panels are on top";

    ASSERT_TRUE(test::waitUntil([&] { return !view->enableExtensionPanel()->isHidden(); }, 1500ms));
    // One loop polls at most six times in five seconds, two at least eight when each answer
    // comes back at once; a busy machine delays some of those.
    const auto before = bridge.stateQueries.size();
    test::spin(5s);
    const auto polled = bridge.stateQueries.size() - before;
    EXPECT_GE(polled, 7u) << "two loops now";
    EXPECT_LE(polled, 12u);
}

TEST_F(ViewTest, TheAnimationPlaysOnlyWhileItsPanelIsOnScreen)
{
    bridge.enabled = false;
    const auto view = makeView(100ms);
    ASSERT_TRUE(test::waitUntil([&] { return !view->enableExtensionPanel()->isHidden(); }));
    AnimationView* animation = view->animation();
    EXPECT_FALSE(animation->isRunning()) << "the window is not on screen yet";

    view->show();
    EXPECT_TRUE(animation->isRunning());

    bridge.enabled = true;
    ASSERT_TRUE(test::waitUntil([&] { return !view->extensionEnabledPanel()->isHidden(); }));
    EXPECT_FALSE(animation->isRunning()) << "the enabled panel hides it";

    bridge.enabled = false;
    ASSERT_TRUE(test::waitUntil([&] { return !view->enableExtensionPanel()->isHidden(); }));
    EXPECT_TRUE(animation->isRunning());

    view->hide();
    EXPECT_FALSE(animation->isRunning()) << "a closed window plays nothing";
    view->show();
    EXPECT_TRUE(animation->isRunning());
}

TEST_F(ViewTest, AFrameOfTheAnimationRepaintsOnlyWhatChanged)
{
    const auto view = showAnimation();
    ASSERT_TRUE(view);
    AnimationView* animation = view->animation();

    // The areas the animation repaints over a whole loop.
    struct PaintRecorder : QObject {
        std::vector<QRect> painted;
        bool eventFilter(QObject*, QEvent* event) override
        {
            if (event->type() == QEvent::Paint)
                painted.push_back(static_cast<QPaintEvent*>(event)->rect());
            return false;
        }
    } recorder;
    animation->installEventFilter(&recorder);
    test::spin(5500ms);
    animation->removeEventFilter(&recorder);

    const int whole = animation->width() * animation->height();
    const auto small = std::count_if(recorder.painted.begin(), recorder.painted.end(),
                                     [&](const QRect& r) { return r.width() * r.height() * 4 < whole; });
    ASSERT_GE(recorder.painted.size(), 30u) << "a loop has 65 frames";
    // Most of the loop is a pointer moving over a still page.
    EXPECT_GT(small * 2, static_cast<long>(recorder.painted.size()))
        << small << " of " << recorder.painted.size() << " repaints were small";
}

TEST_F(ViewTest, AnAppearanceChangeStopsTheAnimationItCoversForGood)
{
    bridge.enabled = false;
    const auto view = makeView(100ms);
    view->show();
    ASSERT_TRUE(test::waitUntil([&] { return !view->enableExtensionPanel()->isHidden(); }));
    const QPointer<AnimationView> covered = view->animation();
    ASSERT_TRUE(covered->isRunning());

    appearance.setDark(true);
    ASSERT_TRUE(test::waitUntil([&] { return !view->enableExtensionPanel()->isHidden(); }));
    ASSERT_NE(view->animation(), covered.data());
    EXPECT_TRUE(view->animation()->isRunning());
    ASSERT_TRUE(covered) << "earlier panels stay beneath, with what they hold";
    EXPECT_FALSE(covered->isRunning());

    // Closing and reopening the window shows every panel again; the covered one stays still.
    view->hide();
    view->show();
    EXPECT_FALSE(covered->isRunning());
    EXPECT_TRUE(view->animation()->isRunning());
}

TEST_F(ViewTest, EnabledWithNoSharedUserOpensTheLoginTabOnce)
{
    const auto view = makeView(50ms);
    ASSERT_TRUE(test::waitUntil([&] { return bridge.stateQueries.size() >= 4; }));
    EXPECT_EQ(dispatchedNames(), std::vector<std::string>{"oauthOpenLoginTab"});
    EXPECT_FALSE(bridge.dispatches.front().userInfo.has_value());
    EXPECT_FALSE(oauth.shouldAutoOpenLoginTab);
    EXPECT_EQ(container->get(QStringLiteral("message.oauthOpenLoginTabMessage")),
              QByteArray("[true]"));
}

TEST_F(ViewTest, EnabledWithAnAnonymousUserOpensTheLoginTab)
{
    sharedData->userInfo.setValue(anonymous);
    const auto view = makeView(50ms);
    ASSERT_TRUE(test::waitUntil([&] { return bridge.stateQueries.size() >= 3; }));
    EXPECT_EQ(dispatchedNames(), std::vector<std::string>{"oauthOpenLoginTab"});
}

TEST_F(ViewTest, EnabledWithASignedInUserDoesNotOpenTheLoginTabButUsesUpTheChance)
{
    sharedData->userInfo.setValue(signedIn);
    const auto view = makeView(50ms);
    ASSERT_TRUE(test::waitUntil([&] { return bridge.stateQueries.size() >= 2; }));
    sharedData->userInfo.setValue(std::nullopt);
    ASSERT_TRUE(test::waitUntil([&] { return bridge.stateQueries.size() >= 5; }));
    EXPECT_TRUE(bridge.dispatches.empty());
    EXPECT_FALSE(oauth.shouldAutoOpenLoginTab);
}

TEST_F(ViewTest, DisabledExtensionNeverOpensTheLoginTab)
{
    bridge.enabled = false;
    const auto view = makeView(50ms);
    ASSERT_TRUE(test::waitUntil([&] { return bridge.stateQueries.size() >= 3; }));
    EXPECT_TRUE(bridge.dispatches.empty());
    EXPECT_TRUE(oauth.shouldAutoOpenLoginTab);
}

TEST_F(ViewTest, CallbackBeforeTheFirstEnabledResultPreventsTheLoginTab)
{
    bridge.enabled = false;
    const auto view = makeView(50ms);
    oauth.handleGetURL(QStringLiteral("lexmira.extension://oauth?code=a&code_challenge=b"));
    bridge.enabled = true;
    ASSERT_TRUE(test::waitUntil([&] { return !view->extensionEnabledPanel()->isHidden(); }));
    test::spin(200ms);
    EXPECT_EQ(dispatchedNames(), std::vector<std::string>{"oauthExchange"});
}

TEST_F(ViewTest, OkGotItAsksTheExtensionToOpenTheBrowserThenEnds)
{
    const auto view = makeView();
    view->show();
    ASSERT_TRUE(test::waitUntil([&] { return !view->extensionEnabledPanel()->isHidden(); }));
    bridge.dispatches.clear();
    QTest::mouseClick(view->openSafariButton(), Qt::LeftButton);
    EXPECT_FALSE(view->openSafariButton()->isEnabled());
    ASSERT_TRUE(test::waitUntil([&] { return terminations == 1; }));
    ASSERT_EQ(dispatchedNames(), std::vector<std::string>{"openSafari"});
    EXPECT_FALSE(bridge.dispatches.front().userInfo.has_value());
    EXPECT_TRUE(alerts.alerts.empty());
}

TEST_F(ViewTest, OkGotItThatFailsShowsTheAlertReenablesAndLogs)
{
    sharedData->userInfo.setValue(signedIn);
    const auto view = makeView();
    view->show();
    ASSERT_TRUE(test::waitUntil([&] { return !view->extensionEnabledPanel()->isHidden(); }));
    bridge.dispatchErrors.push_back(
        {QStringLiteral("com.lexmira.Extension1.Error"), QStringLiteral("Browser is busy")});
    bool disabledWhileAlertShown = false;
    alerts.onShow = [&](const Alert&) {
        disabledWhileAlertShown = !view->openSafariButton()->isEnabled();
    };
    QTest::mouseClick(view->openSafariButton(), Qt::LeftButton);
    ASSERT_TRUE(test::waitUntil([&] { return alerts.alerts.size() == 1; }));
    EXPECT_EQ(alerts.alerts.front(), (Alert{QStringLiteral("Could not open Safari"),
                                            QStringLiteral("Browser is busy"),
                                            Alert::Style::critical,
                                            {QStringLiteral("OK")}}));
    EXPECT_TRUE(disabledWhileAlertShown);
    EXPECT_TRUE(view->openSafariButton()->isEnabled());
    EXPECT_EQ(terminations, 0);
    ASSERT_TRUE(server.waitForRequests(2));
    test::spin(200ms);
    auto records = test::logRecords(server);
    std::sort(records.begin(), records.end());
    EXPECT_EQ(records,
              (Records{{"companion.openSafari", "Could not continue to extension: Browser is busy"},
                       {"companion.openSafari", "Could not open Safari: Browser is busy"}}));
}

TEST_F(ViewTest, OkGotItThatFailsNamesTheBrowserInTheAlertButNotInTheLog)
{
    sharedData->userInfo.setValue(signedIn);
    bridge.browserName = QStringLiteral("Chromium");
    const auto view = makeView();
    view->show();
    ASSERT_TRUE(test::waitUntil([&] {
        return !view->extensionEnabledPanel()->isHidden() &&
               view->browserName() == QLatin1String("Chromium");
    }));
    bridge.dispatchErrors.push_back(
        {QStringLiteral("com.lexmira.Extension1.Error"), QStringLiteral("Browser is busy")});
    QTest::mouseClick(view->openSafariButton(), Qt::LeftButton);
    ASSERT_TRUE(test::waitUntil([&] { return alerts.alerts.size() == 1; }));
    EXPECT_EQ(alerts.alerts.front(), (Alert{QStringLiteral("Could not open Chromium"),
                                            QStringLiteral("Browser is busy"),
                                            Alert::Style::critical,
                                            {QStringLiteral("OK")}}));
    ASSERT_TRUE(server.waitForRequests(2));
    test::spin(200ms);
    auto records = test::logRecords(server);
    std::sort(records.begin(), records.end());
    EXPECT_EQ(records,
              (Records{{"companion.openSafari", "Could not continue to extension: Browser is busy"},
                       {"companion.openSafari", "Could not open Safari: Browser is busy"}}))
        << "log lines are the system's own and never change";
}

TEST_F(ViewTest, TheBrowserNameIsAskedAgainWhenTheStateChanges)
{
    bridge.enabled = false;
    bridge.browserName = QStringLiteral("Chromium");
    const auto view = makeView(50ms);
    view->show();
    ASSERT_TRUE(test::waitUntil([&] {
        return !view->enableExtensionPanel()->isHidden() &&
               view->browserName() == QLatin1String("Chromium");
    }));
    const auto askedWhileDisabled = bridge.browserNameQueries.size();
    test::spin(300ms);
    EXPECT_EQ(bridge.browserNameQueries.size(), askedWhileDisabled)
        << "an unchanged state asks nothing more on each tick";

    // The user enables the extension in Firefox.
    bridge.browserName = QStringLiteral("Firefox");
    bridge.enabled = true;
    ASSERT_TRUE(test::waitUntil([&] {
        return !view->extensionEnabledPanel()->isHidden() &&
               view->browserName() == QLatin1String("Firefox");
    }));
    EXPECT_TRUE(view->enabledBody()->text().endsWith(QLatin1String("try restarting Firefox.")));
    EXPECT_TRUE(view->animation()->fileName().endsWith(QLatin1String("Firefox.gif")));

    // Firefox closes; nobody reports a browser any more.
    bridge.browserName.clear();
    bridge.enabled = false;
    ASSERT_TRUE(test::waitUntil([&] {
        return !view->enableExtensionPanel()->isHidden() && view->browserName().isEmpty();
    }));
    EXPECT_TRUE(view->enabledBody()->text().endsWith(QLatin1String("try restarting Safari.")));
    EXPECT_TRUE(view->animation()->fileName().endsWith(QLatin1String("Chromium.gif")));
}

TEST_F(ViewTest, ANameThatCannotStandInATextLeavesTheTextsAsWritten)
{
    bridge.browserName = QStringLiteral("Evil\nBrowser");
    const auto view = makeView();
    view->show();
    ASSERT_TRUE(test::waitUntil([&] {
        return !view->extensionEnabledPanel()->isHidden() && !bridge.browserNameQueries.empty();
    }));
    test::spin(100ms);
    EXPECT_TRUE(view->browserName().isEmpty());
    EXPECT_EQ(view->enabledBody()->text(),
              QStringLiteral("If you don\u2019t see Lexmira in your \nSafari toolbar, try "
                             "restarting Safari."));
}

TEST_F(ViewTest, OpenSettingsShowsTheBusyLookUntilTheRequestCompletes)
{
    bridge.enabled = false;
    bridge.holdPreferences = true;
    const auto view = makeView();
    view->show();
    ASSERT_TRUE(test::waitUntil([&] { return !view->enableExtensionPanel()->isHidden(); }));
    auto* button = view->openSafariExtensionPreferencesButton();
    QTest::mouseClick(button, Qt::LeftButton);
    EXPECT_EQ(bridge.preferencesShown, std::vector<QString>{test::extensionId});
    EXPECT_FALSE(button->isEnabled());
    EXPECT_EQ(button->text(), QStringLiteral("Opening..."));
    EXPECT_EQ(button->background(), QColor(0xFF, 0xFF, 0xFF));
    EXPECT_EQ(button->border(), QColor(0xE4, 0xE4, 0xE4));
    EXPECT_EQ(button->borderWidth(), 1);

    ASSERT_EQ(bridge.heldPreferences.size(), 1u);
    bridge.heldPreferences.front()(std::nullopt);
    ASSERT_TRUE(test::waitUntil([&] { return button->isEnabled(); }));
    EXPECT_EQ(button->text(), QStringLiteral("Open settings to enable Lexmira"));
    EXPECT_EQ(button->background(), QColor(0x19, 0x6D, 0xEF));
    EXPECT_EQ(button->borderWidth(), 0);
    EXPECT_TRUE(alerts.alerts.empty());
}

TEST_F(ViewTest, OpenSettingsThatFailsShowsTheAlertLogsAndRestoresTheButton)
{
    bridge.enabled = false;
    bridge.preferencesErrors.push_back(
        {QStringLiteral("com.lexmira.Extension1.Error"), QStringLiteral("No settings")});
    const auto view = makeView();
    view->show();
    ASSERT_TRUE(test::waitUntil([&] { return !view->enableExtensionPanel()->isHidden(); }));
    auto* button = view->openSafariExtensionPreferencesButton();
    bool busyWhileAlertShown = false;
    alerts.onShow = [&](const Alert&) {
        busyWhileAlertShown = button->text() == QStringLiteral("Opening...");
    };
    QTest::mouseClick(button, Qt::LeftButton);
    ASSERT_TRUE(test::waitUntil([&] { return button->isEnabled(); }));
    ASSERT_EQ(alerts.alerts.size(), 1u);
    EXPECT_EQ(alerts.alerts.front(), (Alert{QStringLiteral("Could not open extensions settings"),
                                            QStringLiteral("No settings"),
                                            Alert::Style::critical,
                                            {QStringLiteral("OK")}}));
    EXPECT_TRUE(busyWhileAlertShown);
    EXPECT_EQ(button->text(), QStringLiteral("Open settings to enable Lexmira"));
    ASSERT_TRUE(server.waitForRequests(1));
    EXPECT_EQ(test::logRecords(server),
              (Records{{"companion.openExtensionsSettings",
                        "Could not open extensions settings: No settings"}}));
}

TEST_F(ViewTest, ButtonsAndTextsAreAccessible)
{
    const auto view = makeView();
    view->show();
    for (FlatButton* button :
         {view->openSafariButton(), view->openSafariExtensionPreferencesButton()}) {
        QAccessibleInterface* accessible = QAccessible::queryAccessibleInterface(button);
        ASSERT_NE(accessible, nullptr);
        EXPECT_EQ(accessible->role(), QAccessible::Button);
        EXPECT_EQ(accessible->text(QAccessible::Name), button->text());
    }
    QAccessibleInterface* title = QAccessible::queryAccessibleInterface(
        childrenOf<TextView>(view->extensionEnabledPanel()).first());
    ASSERT_NE(title, nullptr);
    EXPECT_EQ(title->role(), QAccessible::StaticText);
    EXPECT_EQ(title->text(QAccessible::Name), QString::fromUtf8("You\u2019re all set!"));
    QAccessibleInterface* steps = QAccessible::queryAccessibleInterface(
        childrenOf<TextView>(view->enableExtensionPanel())[2]);
    EXPECT_EQ(steps->text(QAccessible::Name),
              QStringLiteral("1. Open settings. 2. Click checkbox to grant permission."));
}

} // namespace

namespace {

TEST_F(ViewTest, StepPiecesAreLeftOutOfWhatScreenReadersRead)
{
    const auto view = makeView();
    view->show();
    QAccessibleInterface* panel =
        QAccessible::queryAccessibleInterface(view->enableExtensionPanel());
    ASSERT_NE(panel, nullptr);
    QStringList names;
    for (int i = 0; i < panel->childCount(); ++i) {
        QAccessibleInterface* child = panel->child(i);
        ASSERT_NE(child, nullptr);
        EXPECT_EQ(panel->indexOfChild(child), i);
        names << child->text(QAccessible::Name);
    }
    // The warning mark, the steps as one sentence, the button, the animation.
    EXPECT_EQ(names, (QStringList{QStringLiteral("Warning"),
                                  QStringLiteral("1. Open settings. 2. Click checkbox to grant "
                                                 "permission."),
                                  QStringLiteral("Open settings to enable Lexmira"),
                                  QStringLiteral("How to enable Lexmira")}));
    // Still drawn: all four pieces are on the panel.
    EXPECT_EQ(childrenOf<TextView>(view->enableExtensionPanel()).size(), 4);
}

} // namespace

} // namespace lexmira
