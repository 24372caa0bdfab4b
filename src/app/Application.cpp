// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "app/Application.h"

#include "app/AboutPanel.h"
#include "app/AppLog.h"
#include "platform/WindowSystem.h"
#include "util/FatalError.h"

#include <QAction>
#include <QEvent>
#include <QMenu>
#include <QMenuBar>
#include <QTimer>

#include <algorithm>

namespace lexmira {

Application::Application(int& argc, char** argv)
    : QApplication(argc, argv)
{
    // The process lives on with its window closed and ends through Quit.
    setQuitOnLastWindowClosed(false);
}

Application::~Application()
{
    // The delegate owns windows; they go while the application object is still whole.
    delegate_.reset();
    delete aboutPanel_;
    delete mainMenu_;
}

Application& Application::shared()
{
    auto* application = qobject_cast<Application*>(QCoreApplication::instance());
    if (!application)
        fatalError("There is no shared application object");
    return *application;
}

void Application::setMainMenu(std::unique_ptr<QMenuBar> menu)
{
    delete mainMenu_;
    mainMenu_ = menu.release();
}

void Application::setDelegate(std::unique_ptr<ApplicationDelegate> delegate)
{
    delegate_ = std::move(delegate);
}

void Application::setWindowsMenu(QMenu* menu)
{
    windowsMenu_ = menu;
    windowsSeparator_ = nullptr;
    windowsItems_.clear();
}

void Application::addWindowsItem(QWidget* window, const QString& title)
{
    if (!windowsMenu_ || !window)
        return;
    if (auto* item = windowsItems_.value(window)) {
        item->setText(title);
        return;
    }
    if (!windowsSeparator_)
        windowsSeparator_ = windowsMenu_->addSeparator();
    QAction* item = windowsMenu_->addAction(title);
    connect(item, &QAction::triggered, window, [window] {
        window->showNormal();
        window->raise();
        window->activateWindow();
    });
    windowsItems_.insert(window, item);
    window->installEventFilter(this);
    connect(window, &QObject::destroyed, this, [this, window] { removeWindowsItem(window); });
}

void Application::removeWindowsItem(QWidget* window)
{
    QAction* item = windowsItems_.take(window);
    if (!item)
        return;
    window->removeEventFilter(this);
    delete item;
    if (windowsItems_.isEmpty()) {
        delete windowsSeparator_;
        windowsSeparator_ = nullptr;
    }
}

bool Application::eventFilter(QObject* watched, QEvent* event)
{
    // A window that is closed or hidden by the program leaves the list; one that the window
    // system hides on minimising (a spontaneous hide) stays in it.
    if (event->type() == QEvent::Hide && !event->spontaneous())
        if (auto* window = qobject_cast<QWidget*>(watched); windowsItems_.contains(window))
            removeWindowsItem(window);
    return QApplication::eventFilter(watched, event);
}

void Application::setGetUrlHandler(GetUrlHandler* handler)
{
    urlHandler_ = handler;
    deliverPendingUrls();
}

void Application::openUrls(const QStringList& urls)
{
    const qsizetype room = std::max<qsizetype>(0, maxPendingUrls - pendingUrls_.size());
    if (urls.size() > room)
        qCWarning(lcApp, "Too many URLs waiting to be opened; %lld dropped",
                  static_cast<long long>(urls.size() - room));
    pendingUrls_.append(urls.mid(0, room));
    deliverPendingUrls();
}

void Application::deliverPendingUrls()
{
    if (!urlHandler_ || pendingUrls_.isEmpty() || deliveryScheduled_)
        return;
    deliveryScheduled_ = true;
    // One URL per turn of the event loop, in arrival order. That turn can be one of a modal
    // alert's own loop, so the handler may see the next URL while an alert is up; the alerts it
    // causes are kept from nesting where they are shown (AlertQueue).
    QTimer::singleShot(0, this, [this] {
        deliveryScheduled_ = false;
        if (!urlHandler_ || pendingUrls_.isEmpty())
            return;
        const QString url = pendingUrls_.takeFirst();
        urlHandler_->handleGetURL(url);
        deliverPendingUrls();
    });
}

void Application::reopen(const LaunchActivation& launch)
{
    if (delegate_) {
        const QWidgetList windows = topLevelWidgets();
        const bool hasVisibleWindows = std::any_of(windows.begin(), windows.end(), [](QWidget* w) {
            return w->isWindow() && w->isVisible() && !w->isMinimized() && !qobject_cast<QMenu*>(w);
        });
        delegate_->applicationShouldHandleReopen(hasVisibleWindows);
    }
    activate(launch);
}

void Application::activate(const LaunchActivation& launch)
{
    arrangeInFront();
    if (QWidget* window = windowToActivate())
        bringWindowToFront(window, launch);
    else
        endLaunchFeedback(launch);
}

QWidget* Application::windowToActivate() const
{
    if (QWidget* window = activeWindow(); window && window->isVisible())
        return window;
    if (!windowsMenu_)
        return nullptr;
    const auto items = windowsMenu_->actions();
    for (QAction* item : items)
        if (QWidget* window = windowsItems_.key(item); window && window->isVisible())
            return window;
    return nullptr;
}

int Application::run()
{
    if (delegate_)
        delegate_->applicationWillFinishLaunching();
    if (delegate_)
        delegate_->applicationDidFinishLaunching();
    exec();
    return 0;
}

void Application::orderFrontStandardAboutPanel()
{
    if (!aboutPanel_)
        aboutPanel_ = new AboutPanel();
    aboutPanel_->show();
    aboutPanel_->raise();
    aboutPanel_->activateWindow();
}

void Application::terminate()
{
    quit();
}

void Application::performClose()
{
    if (QWidget* window = activeWindow())
        window->close();
}

void Application::performMiniaturize()
{
    if (QWidget* window = activeWindow())
        window->showMinimized();
}

void Application::arrangeInFront()
{
    const QWidgetList windows = topLevelWidgets();
    for (QWidget* window : windows)
        if (window->isWindow() && window->isVisible() && !qobject_cast<QMenu*>(window))
            window->raise();
}

} // namespace lexmira
