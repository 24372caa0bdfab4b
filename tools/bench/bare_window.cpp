// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

// bench-bare-window: the cheapest Qt Widgets window that looks like the companion's from the
// outside — the same title, window flags and size, centred — and does nothing else. The
// baseline the companion's start-up, memory and idle cost are measured against.
//
// bench-floor-window, built from this file too, is the least a program can do that starts as
// the companion must: it loads the libraries the companion links, and once its window is shown
// it draws the panels' texts in their fonts and sends one HTTPS request (to
// LEXMIRA_ANALYTICS_URL) through Qt's network stack, as the start's analytics event does. None
// of the companion's own code runs. What it costs over the bare window is what the companion
// cannot shed without doing less than the system asks.
//
//     bench-bare-window [WIDTH HEIGHT]
//     bench-floor-window [WIDTH HEIGHT]
//
// Both leave the same start-up marks as the companion where they reach the same points, when
// LEXMIRA_STARTUP_TRACE names a file.

#include "app/StartupTrace.h"

#include <QApplication>
#include <QScreen>
#include <QWidget>

#ifdef LEXMIRA_BENCH_FLOOR
#include <QLabel>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTimer>
#include <QUrl>
#endif

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
#ifdef LEXMIRA_BENCH_FLOOR
    QNetworkAccessManager network;
    QTimer::singleShot(0, &window, [&window, &network] {
        const auto text = [&window](const QString& line, int pixelSize, QFont::Weight weight,
                                    int top) {
            QFont font = QApplication::font();
            font.setFamilies({QStringLiteral("Inter"), font.family()});
            font.setPixelSize(pixelSize);
            font.setWeight(weight);
            auto* label = new QLabel(line, &window);
            label->setFont(font);
            label->move(48, top);
            label->show();
        };
        text(QStringLiteral("You’re all set! "), 24, QFont::Bold, 160);
        text(QStringLiteral("If you don’t see Lexmira in your \nChromium toolbar, try restarting "
                            "Chromium."),
             16, QFont::Light, 214);
        QNetworkReply* reply = network.get(QNetworkRequest(QUrl(qEnvironmentVariable(
            "LEXMIRA_ANALYTICS_URL", QStringLiteral("https://127.0.0.1:9/")))));
        QObject::connect(reply, &QNetworkReply::finished, reply, &QObject::deleteLater);
    });
#endif
    return application.exec();
}
