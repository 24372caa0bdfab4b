// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "app/MainWindow.h"

#include "EnableExtensionView/EnableExtensionView.h"
#include "EnableExtensionView/EnableExtensionViewController.h"
#include "app/Application.h"

#include <QLayout>
#include <QMenuBar>
#include <QMouseEvent>
#include <QScreen>
#include <QWindow>

MainWindow::MainWindow(const QString& title, std::unique_ptr<EnableExtensionViewController> content)
    : QMainWindow(nullptr, Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                               Qt::WindowCloseButtonHint | Qt::WindowMinimizeButtonHint)
    , content_(std::move(content))
{
    setWindowTitle(title);
    // On this platform the menu bar lives in the window, which keeps it from here on.
    if (QMenuBar* menu = Application::shared().mainMenu())
        setMenuBar(menu);
    setCentralWidget(content_->view());
    // The window takes the size of its content and keeps it.
    layout()->setSizeConstraint(QLayout::SetFixedSize);
    adjustSize();
    if (const QScreen* screen = this->screen()) {
        QRect frame = frameGeometry();
        frame.moveCenter(screen->availableGeometry().center());
        move(frame.topLeft());
    }
}

MainWindow::~MainWindow() = default;

void MainWindow::mousePressEvent(QMouseEvent* event)
{
    // Presses that no child took land here: the background moves the window.
    if (event->button() == Qt::LeftButton && windowHandle() && windowHandle()->startSystemMove()) {
        event->accept();
        return;
    }
    QMainWindow::mousePressEvent(event);
}
