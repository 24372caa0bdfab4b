// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "app/MainMenu.h"
#include "app/Application.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QMenu>

namespace lexmira {

namespace {

struct Item {
    QString text;
    QKeySequence shortcut;
    bool separator = false;
};

std::vector<Item> itemsOf(const QMenu* menu)
{
    std::vector<Item> items;
    const auto actions = menu->actions();
    for (const QAction* action : actions)
        items.push_back({action->text(), action->shortcut(), action->isSeparator()});
    return items;
}

void expectItems(const QMenu* menu, const std::vector<Item>& expected)
{
    const auto actual = itemsOf(menu);
    ASSERT_EQ(actual.size(), expected.size()) << menu->title().toStdString();
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(actual[i].separator, expected[i].separator) << i;
        if (expected[i].separator)
            continue;
        EXPECT_EQ(actual[i].text, expected[i].text) << i;
        EXPECT_EQ(actual[i].shortcut, expected[i].shortcut) << actual[i].text.toStdString();
    }
}

TEST(MainMenu, HasApplicationFileAndWindowMenusInOrder)
{
    MainMenu menu(QStringLiteral("Lexmira"));
    const auto top = menu.actions();
    ASSERT_EQ(top.size(), 3);
    EXPECT_EQ(top[0]->text(), QStringLiteral("Lexmira"));
    EXPECT_EQ(top[1]->text(), QStringLiteral("File"));
    EXPECT_EQ(top[2]->text(), QStringLiteral("Window"));
    EXPECT_EQ(top[0]->menu(), menu.applicationMenu());
    EXPECT_EQ(top[1]->menu(), menu.fileMenu());
    EXPECT_EQ(top[2]->menu(), menu.windowMenu());
}

TEST(MainMenu, ApplicationMenuReadsAboutAndQuitWithOneSpace)
{
    MainMenu menu(QStringLiteral("Lexmira"));
    expectItems(menu.applicationMenu(),
                {{QStringLiteral("About Lexmira"), {}},
                 {{}, {}, true},
                 {QStringLiteral("Quit Lexmira"), QKeySequence(Qt::CTRL | Qt::Key_Q)}});
}

TEST(MainMenu, FileMenuHasOpenWithTheEllipsisCharacterAndClose)
{
    MainMenu menu(QStringLiteral("Lexmira"));
    expectItems(menu.fileMenu(),
                {{QStringLiteral("Open\u2026"), QKeySequence(Qt::CTRL | Qt::Key_O)},
                 {{}, {}, true},
                 {QStringLiteral("Close"), QKeySequence(Qt::CTRL | Qt::Key_W)}});
    EXPECT_EQ(menu.fileMenu()->actions().first()->text().size(), 5);
}

TEST(MainMenu, WindowMenuHasMinimizeAndBringAllToFront)
{
    MainMenu menu(QStringLiteral("Lexmira"));
    expectItems(menu.windowMenu(),
                {{QStringLiteral("Minimize"), QKeySequence(Qt::CTRL | Qt::Key_M)},
                 {{}, {}, true},
                 {QStringLiteral("Bring All to Front"), {}}});
}

TEST(MainMenu, WindowMenuBecomesTheApplicationsWindowsMenu)
{
    MainMenu menu(QStringLiteral("Lexmira"));
    EXPECT_EQ(Application::shared().windowsMenu(), menu.windowMenu());
}

TEST(MainMenu, TitlesFollowTheApplicationName)
{
    MainMenu menu(QStringLiteral("Other Name"));
    EXPECT_EQ(menu.applicationMenu()->actions().first()->text(),
              QStringLiteral("About Other Name"));
    EXPECT_EQ(menu.applicationMenu()->actions().last()->text(), QStringLiteral("Quit Other Name"));
}

TEST(MainMenu, AboutItemShowsThePanelFedFromTheBundle)
{
    MainMenu menu(QStringLiteral("Lexmira"));
    menu.applicationMenu()->actions().first()->trigger();
    QWidget* panel = nullptr;
    for (QWidget* window : QApplication::topLevelWidgets())
        if (window->isVisible() && window->windowTitle() == QStringLiteral("About Lexmira"))
            panel = window;
    ASSERT_NE(panel, nullptr);
    bool showsVersion = false;
    for (const QObject* child : panel->children())
        if (const auto* label = qobject_cast<const QWidget*>(child))
            showsVersion |= label->property("text").toString() == QStringLiteral("Version 1.0.0");
    EXPECT_TRUE(showsVersion);
    panel->close();
}

} // namespace

} // namespace lexmira
