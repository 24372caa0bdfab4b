// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "app/Application.h"
#include "app/Env.h"
#include "app/MainMenu.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QMenu>
#include <QTimer>

namespace lexmira {

namespace {

QAction* quitAction(MainMenu& menu)
{
    const auto actions = menu.applicationMenu()->actions();
    for (QAction* action : actions)
        if (action->shortcut() == QKeySequence(Qt::CTRL | Qt::Key_Q))
            return action;
    return nullptr;
}

// Quit from the application menu ends the event loop that runs the application, as process
// entry runs it. Its own executable, since the loop ends for good.
TEST(QuitFromTheMenu, EndsTheApplicationsEventLoop)
{
    auto& application = Application::shared();
    application.setMainMenu(
        std::make_unique<MainMenu>(QString::fromStdString(env().appInfo.appName)));
    auto* menu = qobject_cast<MainMenu*>(application.mainMenu());
    ASSERT_NE(menu, nullptr);
    QAction* quit = quitAction(*menu);
    ASSERT_NE(quit, nullptr);

    bool quitChosen = false;
    QTimer::singleShot(0, quit, [&] {
        quitChosen = true;
        quit->trigger();
    });
    // Should Quit do nothing, the loop is ended from here with another code.
    QTimer failsafe;
    failsafe.setSingleShot(true);
    QObject::connect(&failsafe, &QTimer::timeout, &application, [] { QCoreApplication::exit(7); });
    failsafe.start(std::chrono::seconds(20));

    EXPECT_EQ(application.exec(), 0);
    EXPECT_TRUE(quitChosen);
}

} // namespace

} // namespace lexmira
