// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "app/ApplicationDelegate.h"
#include "platform/GetUrlHandler.h"
#include "platform/LaunchActivation.h"

#include <QApplication>
#include <QHash>
#include <QMenu>
#include <QMenuBar>
#include <QPointer>
#include <QStringList>

#include <memory>
#include <optional>

namespace lexmira {

// The application object: owns the main menu and the delegate, drives the launch sequence, keeps
// the Windows menu's list of windows and routes URLs to the get-URL handler. Main thread only.
class Application final : public QApplication {
    Q_OBJECT

public:
    // The most URLs that wait for the handler; a burst beyond it is dropped, latest first, so
    // that a flood of callbacks cannot grow the queue without end. A burst of a thousand
    // sign-in URLs arriving at once is still delivered whole, in order.
    static constexpr qsizetype maxPendingUrls = 1024;

    Application(int& argc, char** argv);
    ~Application() override;

    // The running Application; stops the process when the application object is missing or of
    // another kind.
    static Application& shared();

    void setMainMenu(std::unique_ptr<QMenuBar> menu);
    QMenuBar* mainMenu() const { return mainMenu_; }

    void setDelegate(std::unique_ptr<ApplicationDelegate> delegate);
    ApplicationDelegate* delegate() const { return delegate_.get(); }

    // The menu that lists the application's windows.
    void setWindowsMenu(QMenu* menu);
    QMenu* windowsMenu() const { return windowsMenu_; }
    // Lists window in the Windows menu under title; a window already listed is retitled, never
    // listed twice. The entry goes away when the window is closed or hidden.
    void addWindowsItem(QWidget* window, const QString& title);

    // The handler that receives every URL the application is asked to open. URLs that arrive
    // before a handler is bound wait, in order, and are delivered once it is.
    void setGetUrlHandler(GetUrlHandler* handler);
    // Queues URLs for the handler. Each is delivered from the event loop, in order; URLs that
    // find maxPendingUrls waiting are dropped.
    void openUrls(const QStringList& urls);

    // Another launch asked for the application: hands the request to the delegate, then brings
    // the application to the front with launch.
    void reopen(const LaunchActivation& launch = {});

    // Brings the application's visible windows to the front, and gives the focus to the one the
    // user had last (the active window, or else the first in the Windows menu) with launch.
    // Ends the launch's startup feedback even when no window is visible.
    void activate(const LaunchActivation& launch);

    // will-finish-launching, did-finish-launching, then the event loop. Returns 0 when it ends.
    int run();

    // The standard actions of the menus.
    void orderFrontStandardAboutPanel();
    void terminate();
    void performClose();
    void performMiniaturize();
    void arrangeInFront();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void removeWindowsItem(QWidget* window);
    QWidget* windowToActivate() const;
    void deliverPendingUrls();

    QPointer<QMenuBar> mainMenu_;
    std::unique_ptr<ApplicationDelegate> delegate_;
    QPointer<QMenu> windowsMenu_;
    QAction* windowsSeparator_ = nullptr;
    QHash<QWidget*, QAction*> windowsItems_;
    QPointer<QWidget> aboutPanel_;
    GetUrlHandler* urlHandler_ = nullptr;
    QStringList pendingUrls_;
    bool deliveryScheduled_ = false;
};

} // namespace lexmira
