// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "app/MainMenu.h"

#include "app/AppDelegate.h"
#include "app/Application.h"
#include "app/MainWindowController.h"

#include <QAction>
#include <QKeySequence>
#include <QMenu>

namespace lexmira {

MainMenu::MainMenu(const QString& appName)
    : applicationMenu_(addMenu(appName))
    , fileMenu_(addMenu(tr("File")))
    , windowMenu_(addMenu(tr("Window")))
{
    auto& application = Application::shared();
    const auto add = [](QMenu* menu, const QString& title, auto* receiver, auto slot,
                        const QKeySequence& key = {}) {
        QAction* item = menu->addAction(title);
        item->setShortcut(key);
        item->setMenuRole(QAction::NoRole);
        QObject::connect(item, &QAction::triggered, receiver, slot);
        return item;
    };

    add(applicationMenu_, tr("About %1").arg(appName), &application,
        &Application::orderFrontStandardAboutPanel);
    applicationMenu_->addSeparator();
    add(applicationMenu_, tr("Quit %1").arg(appName), &application, &Application::terminate,
        QKeySequence(Qt::CTRL | Qt::Key_Q));

    add(fileMenu_, tr("Open…"), this, &MainMenu::open,
        QKeySequence(Qt::CTRL | Qt::Key_O));
    fileMenu_->addSeparator();
    add(fileMenu_, tr("Close"), &application, &Application::performClose,
        QKeySequence(Qt::CTRL | Qt::Key_W));

    add(windowMenu_, tr("Minimize"), &application, &Application::performMiniaturize,
        QKeySequence(Qt::CTRL | Qt::Key_M));
    windowMenu_->addSeparator();
    add(windowMenu_, tr("Bring All to Front"), &application,
        &Application::arrangeInFront);

    application.setWindowsMenu(windowMenu_);
}

void MainMenu::open()
{
    AppDelegate::shared().mainWindowController().showWindow(this);
}

} // namespace lexmira
