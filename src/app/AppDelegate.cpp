#include "app/AppDelegate.h"

#include "Common/Env.h"
#include "EnableExtensionView/EnableExtensionViewController.h"
#include "app/Application.h"
#include "app/MainWindow.h"
#include "app/MainWindowController.h"
#include "bridge/OAuth.h"
#include "platform/UserDefaults.h"
#include "services/Tracker.h"

namespace {

// Keeps the window manager's full-screen entry out of the menus.
const QString fullScreenMenuItemKey = QStringLiteral("NSFullScreenMenuItemEverywhere");

} // namespace

AppDelegate::AppDelegate()
    : mainWindowController_(std::make_unique<MainWindowController>())
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
}

void AppDelegate::applicationDidFinishLaunching()
{
    mainWindowController_->setWindow(
        std::make_unique<MainWindow>(QString::fromStdString(env().appInfo.appName),
                                     std::make_unique<EnableExtensionViewController>()));
    mainWindowController_->showWindow(this);
    env().tracker().norv().recordAppStart();
}

bool AppDelegate::applicationShouldHandleReopen(bool hasVisibleWindows)
{
    if (!hasVisibleWindows)
        mainWindowController_->showWindow(this);
    return true;
}
