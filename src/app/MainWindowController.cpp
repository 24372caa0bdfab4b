// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "app/MainWindowController.h"

#include "app/Application.h"
#include "app/MainWindow.h"

namespace lexmira {

MainWindowController::MainWindowController(QObject* parent)
    : QObject(parent)
{
}

MainWindowController::~MainWindowController() = default;

void MainWindowController::setWindow(std::unique_ptr<MainWindow> window)
{
    window_ = std::move(window);
}

void MainWindowController::showWindow(QObject* sender)
{
    Q_UNUSED(sender);
    if (!window_)
        return;
    window_->showNormal();
    window_->raise();
    window_->activateWindow();
    Application::shared().addWindowsItem(window_.get(), window_->windowTitle());
}

} // namespace lexmira
