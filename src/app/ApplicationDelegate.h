// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace lexmira {

// What the application asks of its delegate while it starts and when it is reopened. Main
// thread only.
class ApplicationDelegate {
public:
    virtual ~ApplicationDelegate() = default;

    virtual void applicationWillFinishLaunching() = 0;
    virtual void applicationDidFinishLaunching() = 0;
    // Another launch asked for the application while it runs. Returns whether the request was
    // handled.
    virtual bool applicationShouldHandleReopen(bool hasVisibleWindows) = 0;
};

} // namespace lexmira
