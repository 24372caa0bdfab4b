// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "app/MainWindow.h"

#include "EnableExtensionView/EnableExtensionView.h"
#include "EnableExtensionView/EnableExtensionViewController.h"
#include "app/AppLog.h"
#include "app/Application.h"
#include "platform/WindowSystem.h"

#include <QGuiApplication>
#include <QLayout>
#include <QMenuBar>
#include <QMouseEvent>
#include <QScreen>
#include <QWindow>

namespace lexmira {

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
    // Centred on the screen where the program places its windows; on Wayland the compositor
    // places every new window and a move() would do nothing.
    if (const QScreen* screen = this->screen(); screen && windowSystemPlacesWindows()) {
        QRect frame = frameGeometry();
        frame.moveCenter(screen->availableGeometry().center());
        move(frame.topLeft());
    }
}

MainWindow::~MainWindow() = default;

bool MainWindow::event(QEvent* event)
{
    // The native window exists from the first show on; its exposure says whether the window
    // system shows it, which the widget is not told.
    if (event->type() == QEvent::Show)
        if (QWindow* handle = windowHandle())
            handle->installEventFilter(this);
    return QMainWindow::event(event);
}

bool MainWindow::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Expose && watched == windowHandle()) {
        const bool exposed = windowHandle()->isExposed();
        if (exposed != exposed_) {
            exposed_ = exposed;
            qCInfo(lcApp).noquote()
                << "window" << windowTitle() << (exposed ? "shown" : "no longer shown") << "on"
                << QGuiApplication::platformName();
        }
    }
    return QMainWindow::eventFilter(watched, event);
}

void MainWindow::mousePressEvent(QMouseEvent* event)
{
    // Presses that no child took land here: the background moves the window.
    if (event->button() == Qt::LeftButton && windowHandle() && windowHandle()->startSystemMove()) {
        event->accept();
        return;
    }
    QMainWindow::mousePressEvent(event);
}

} // namespace lexmira
