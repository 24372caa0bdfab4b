#pragma once

#include "app/ApplicationDelegate.h"

#include <QObject>

#include <memory>

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

private:
    std::unique_ptr<MainWindowController> mainWindowController_;
};
