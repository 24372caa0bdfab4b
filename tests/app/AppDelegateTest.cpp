// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "app/AppDelegate.h"
#include "app/Application.h"
#include "app/Env.h"
#include "app/MainMenu.h"
#include "app/MainWindow.h"
#include "app/MainWindowController.h"
#include "platform/UserDefaults.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <QAction>

namespace lexmira {

namespace {

// The launch sequence of process entry, run once for this test process.
class Launched : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        auto& application = Application::shared();
        if (!application.mainMenu())
            application.setMainMenu(
                std::make_unique<MainMenu>(QString::fromStdString(env().appInfo.appName)));
        auto& delegate = AppDelegate::shared();
        if (!delegate.mainWindowController().window()) {
            delegate.applicationWillFinishLaunching();
            delegate.applicationDidFinishLaunching();
        }
    }

    void SetUp() override
    {
        // Every test starts from a shown window.
        controller().showWindow(nullptr);
        ASSERT_TRUE(test::waitUntil([&] { return window()->isVisible(); }));
    }

    static MainWindowController& controller()
    {
        return AppDelegate::shared().mainWindowController();
    }
    static MainWindow* window() { return controller().window(); }

    static int mainWindowCount()
    {
        int count = 0;
        for (QWidget* widget : QApplication::topLevelWidgets())
            count += qobject_cast<MainWindow*>(widget) != nullptr;
        return count;
    }

    static QStringList windowsMenuEntries()
    {
        QStringList entries;
        bool pastStaticItems = false;
        const auto actions = Application::shared().windowsMenu()->actions();
        for (const QAction* action : actions) {
            if (action->text() == QStringLiteral("Bring All to Front")) {
                pastStaticItems = true;
                continue;
            }
            if (pastStaticItems && !action->isSeparator())
                entries << action->text();
        }
        return entries;
    }
};

TEST_F(Launched, DidFinishLaunchingShowsTheOneWindowListedInTheWindowsMenu)
{
    EXPECT_EQ(mainWindowCount(), 1);
    EXPECT_TRUE(window()->isVisible());
    EXPECT_EQ(windowsMenuEntries(), QStringList{QStringLiteral("Lexmira")});
}

TEST_F(Launched, WillFinishLaunchingSuppressesTheFullScreenMenuItem)
{
    const QVariant stored =
        env().userDefaults().object(QStringLiteral("NSFullScreenMenuItemEverywhere"));
    ASSERT_TRUE(stored.isValid());
    EXPECT_FALSE(stored.toBool());
}

TEST_F(Launched, ReopenWithTheWindowVisibleDoesNothingButAnswersTrue)
{
    const QRect before = window()->geometry();
    EXPECT_TRUE(AppDelegate::shared().applicationShouldHandleReopen(true));
    EXPECT_EQ(mainWindowCount(), 1);
    EXPECT_TRUE(window()->isVisible());
    EXPECT_EQ(window()->geometry(), before);
    EXPECT_EQ(windowsMenuEntries(), QStringList{QStringLiteral("Lexmira")});
}

TEST_F(Launched, ReopenToldWindowsAreVisibleShowsNothing)
{
    // The window is in fact closed, so a delegate that showed it regardless would be seen here.
    window()->close();
    ASSERT_FALSE(window()->isVisible());
    EXPECT_TRUE(AppDelegate::shared().applicationShouldHandleReopen(true));
    test::spin(std::chrono::milliseconds(50));
    EXPECT_FALSE(window()->isVisible());
    EXPECT_TRUE(windowsMenuEntries().isEmpty());
    EXPECT_EQ(mainWindowCount(), 1);
}

TEST_F(Launched, ClosingTheWindowKeepsTheApplicationAndDropsTheWindowsMenuEntry)
{
    window()->close();
    EXPECT_FALSE(window()->isVisible());
    EXPECT_TRUE(windowsMenuEntries().isEmpty());
    EXPECT_FALSE(QApplication::quitOnLastWindowClosed());
}

TEST_F(Launched, ReopenWithTheWindowClosedShowsItAndRelistsIt)
{
    window()->close();
    ASSERT_TRUE(windowsMenuEntries().isEmpty());
    EXPECT_TRUE(AppDelegate::shared().applicationShouldHandleReopen(false));
    EXPECT_TRUE(window()->isVisible());
    EXPECT_EQ(windowsMenuEntries(), QStringList{QStringLiteral("Lexmira")});
    EXPECT_EQ(mainWindowCount(), 1);
}

TEST_F(Launched, ApplicationReopenAsksTheDelegateWithTheWindowsVisibility)
{
    window()->close();
    Application::shared().reopen();
    EXPECT_TRUE(window()->isVisible());
    EXPECT_EQ(mainWindowCount(), 1);
}

TEST_F(Launched, OpenFromTheMenuWithTheWindowShownLeavesExactlyOneWindow)
{
    auto* menu = qobject_cast<MainMenu*>(Application::shared().mainMenu());
    ASSERT_NE(menu, nullptr);
    menu->fileMenu()->actions().first()->trigger();
    menu->fileMenu()->actions().first()->trigger();
    EXPECT_EQ(mainWindowCount(), 1);
    EXPECT_TRUE(window()->isVisible());
    EXPECT_EQ(windowsMenuEntries(), QStringList{QStringLiteral("Lexmira")});
}

TEST_F(Launched, OpenFromTheMenuWithTheWindowClosedShowsTheSameWindow)
{
    MainWindow* const before = window();
    window()->close();
    auto* menu = qobject_cast<MainMenu*>(Application::shared().mainMenu());
    menu->open();
    EXPECT_EQ(window(), before);
    EXPECT_TRUE(window()->isVisible());
    EXPECT_EQ(mainWindowCount(), 1);
}

TEST_F(Launched, CloseItemClosesTheActiveWindow)
{
    window()->activateWindow();
    ASSERT_TRUE(test::waitUntil([&] { return QApplication::activeWindow() == window(); }));
    auto* menu = qobject_cast<MainMenu*>(Application::shared().mainMenu());
    menu->fileMenu()->actions().last()->trigger();
    EXPECT_FALSE(window()->isVisible());
}

TEST_F(Launched, WindowsMenuEntryBringsTheWindowBack)
{
    window()->showMinimized();
    ASSERT_EQ(windowsMenuEntries(), QStringList{QStringLiteral("Lexmira")});
    const auto actions = Application::shared().windowsMenu()->actions();
    actions.last()->trigger();
    EXPECT_FALSE(window()->isMinimized());
    EXPECT_TRUE(window()->isVisible());
}

} // namespace

} // namespace lexmira
