// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

// bench-bare-window: the cheapest Qt Widgets window that looks like the companion's from the
// outside — the same title, window flags and size, centred — and does nothing else. The
// baseline the companion's start-up, memory and idle cost are measured against.
//
//     bench-bare-window [WIDTH HEIGHT]
//
// Leaves the same start-up marks as the companion where it reaches the same points, when
// LEXMIRA_STARTUP_TRACE names a file.

#include "app/StartupTrace.h"

#include <QApplication>
#include <QScreen>
#include <QWidget>

using lexmira::startupTrace::mark;

int main(int argc, char** argv)
{
    mark("main");
    QApplication application(argc, argv);
    mark("applicationBuilt");
    const QStringList arguments = QApplication::arguments();
    const int width = arguments.size() > 2 ? arguments.at(1).toInt() : 550;
    const int height = arguments.size() > 2 ? arguments.at(2).toInt() : 367;

    QWidget window(nullptr, Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                                Qt::WindowCloseButtonHint | Qt::WindowMinimizeButtonHint);
    window.setWindowTitle(QStringLiteral("Lexmira"));
    window.setFixedSize(width, height);
    if (const QScreen* screen = window.screen()) {
        QRect frame = window.frameGeometry();
        frame.moveCenter(screen->availableGeometry().center());
        window.move(frame.topLeft());
    }
    mark("windowBuilt");
    window.show();
    mark("windowShown");
    return application.exec();
}
