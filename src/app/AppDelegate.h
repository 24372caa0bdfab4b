// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "app/ApplicationDelegate.h"

#include <QObject>

#include <memory>

namespace lexmira {

class EnableExtensionNotification;
class EnableExtensionViewController;
class MainWindowController;

// The application's delegate: binds the URL handler, shows the main window, answers reopen.
// Main thread only.
class AppDelegate final : public QObject, public ApplicationDelegate {
    Q_OBJECT

public:
    AppDelegate();
    ~AppDelegate() override;

    // The delegate of the shared application, created and installed on first use.
    static AppDelegate& shared();

    MainWindowController& mainWindowController() const { return *mainWindowController_; }

    void applicationWillFinishLaunching() override;
    void applicationDidFinishLaunching() override;
    bool applicationShouldHandleReopen(bool hasVisibleWindows) override;

    // The window's content, wired to the environment's services.
    static std::unique_ptr<EnableExtensionViewController> makeEnableExtensionViewController();

    EnableExtensionNotification& enableExtensionNotification() const
    {
        return *enableExtensionNotification_;
    }

private:
    void followAppearance();

    std::unique_ptr<MainWindowController> mainWindowController_;
    std::unique_ptr<EnableExtensionNotification> enableExtensionNotification_;
};

} // namespace lexmira
