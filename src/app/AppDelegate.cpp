// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "app/AppDelegate.h"

#include "EnableExtensionView/ColorScheme.h"
#include "EnableExtensionView/EnableExtensionNotification.h"
#include "EnableExtensionView/EnableExtensionViewController.h"
#include "EnableExtensionView/ExtensionPreferences.h"
#include "app/Application.h"
#include "app/Env.h"
#include "app/MainWindow.h"
#include "app/MainWindowController.h"
#include "app/StartupTrace.h"
#include "bridge/OAuth.h"
#include "platform/Appearance.h"
#include "platform/MainBundle.h"
#include "platform/UserDefaults.h"
#include "services/Tracker.h"

#include <QApplication>

namespace lexmira {

namespace {

// Keeps the window manager's full-screen entry out of the menus.
const QString fullScreenMenuItemKey = QStringLiteral("NSFullScreenMenuItemEverywhere");

} // namespace

AppDelegate::AppDelegate()
    : mainWindowController_(std::make_unique<MainWindowController>())
    // The minute before the reminder counts from here, the start of the process.
    , enableExtensionNotification_(std::make_unique<EnableExtensionNotification>(
          env().extensionBridge(), QString::fromStdString(env().appInfo.extensionBundleIdentifier),
          env().userNotifications(), env().extensionPreferences()))
{
}

AppDelegate::~AppDelegate() = default;

AppDelegate& AppDelegate::shared()
{
    auto& application = Application::shared();
    if (auto* delegate = dynamic_cast<AppDelegate*>(application.delegate()))
        return *delegate;
    auto delegate = std::make_unique<AppDelegate>();
    auto& installed = *delegate;
    application.setDelegate(std::move(delegate));
    return installed;
}

void AppDelegate::applicationWillFinishLaunching()
{
    env().userDefaults().setBool(false, fullScreenMenuItemKey);
    // Bound before launch completes, so that a URL that started the application is delivered.
    Application::shared().setGetUrlHandler(&env().oauth());
    followAppearance();
}

void AppDelegate::followAppearance()
{
    // The panel draws its own colours; the menu bar, menus, the About panel and alerts take
    // the application's palette, dark with the panel and the platform's own otherwise.
    Appearance& appearance = env().appearance();
    const auto apply = [&appearance, platform = QApplication::palette()] {
        QApplication::setPalette(appearance.isDark() ? ColorScheme::darkPalette() : platform);
    };
    apply();
    connect(&appearance, &Appearance::changed, this, apply);
}

void AppDelegate::applicationDidFinishLaunching()
{
    mainWindowController_->setWindow(std::make_unique<MainWindow>(
        QString::fromStdString(env().appInfo.appName), makeEnableExtensionViewController()));
    startupTrace::mark("windowBuilt");
    mainWindowController_->showWindow(this);
    startupTrace::mark("windowShown");
    env().tracker().norv().recordAppStart();
}

std::unique_ptr<EnableExtensionViewController> AppDelegate::makeEnableExtensionViewController()
{
    return std::make_unique<EnableExtensionViewController>(EnableExtensionView::Dependencies{
        env().extensionBridge(),
        QString::fromStdString(env().appInfo.extensionBundleIdentifier),
        env().oauth(),
        env().sharedData,
        env().skrivo(),
        env().alertPresenter(),
        env().appearance(),
        env().extensionPreferences(),
        Artwork(mainBundleDirectory()),
        [] { Application::shared().terminate(); },
    });
}

bool AppDelegate::applicationShouldHandleReopen(bool hasVisibleWindows)
{
    if (!hasVisibleWindows)
        mainWindowController_->showWindow(this);
    return true;
}

} // namespace lexmira
