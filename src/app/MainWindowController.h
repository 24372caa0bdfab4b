// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QObject>

#include <memory>

namespace lexmira {

class MainWindow;

// Shows the main window and keeps it listed in the Windows menu. Owns the window.
class MainWindowController final : public QObject {
    Q_OBJECT

public:
    explicit MainWindowController(QObject* parent = nullptr);
    ~MainWindowController() override;

    void setWindow(std::unique_ptr<MainWindow> window);
    MainWindow* window() const { return window_.get(); }

    // Brings the window to the front and (re)lists it in the Windows menu under its title.
    // sender may be null.
    void showWindow(QObject* sender);

private:
    std::unique_ptr<MainWindow> window_;
};

} // namespace lexmira
