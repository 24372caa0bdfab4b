// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QMenuBar>

class QMenu;

namespace lexmira {

// The menu bar: the application menu (About, Quit), File (Open…, Close) and Window (Minimize,
// Bring All to Front, then the list of windows). Ctrl stands where the Mac has Command.
class MainMenu final : public QMenuBar {
    Q_OBJECT

public:
    // appName titles the application menu and completes "About " and "Quit ".
    explicit MainMenu(const QString& appName);

    QMenu* applicationMenu() const { return applicationMenu_; }
    QMenu* fileMenu() const { return fileMenu_; }
    QMenu* windowMenu() const { return windowMenu_; }

    // "Open…": shows the main window through its controller; never creates a second window.
    void open();

private:
    QMenu* applicationMenu_;
    QMenu* fileMenu_;
    QMenu* windowMenu_;
};

} // namespace lexmira
