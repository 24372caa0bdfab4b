// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "EnableExtensionView/EnableExtensionView.h"
#include "EnableExtensionView/ExtensionPreferences.h"
#include "EnableExtensionView/ViewTestSupport.h"
#include "bridge/OAuth.h"
#include "fakes/FakeAppearance.h"
#include "fakes/QueuedExtensionBridge.h"
#include "fakes/RecordingAlertPresenter.h"
#include "platform/MainBundle.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <QLabel>

#include <memory>

namespace lexmira {

namespace test {

inline const QString extensionId = QStringLiteral("com.lexmira.companion.ext");

// An enable-extension view over fakes of the extension and the desktop, with the real sign-in
// hand-off and a remote log that posts to a loopback HTTPS server.
class ViewFixture : public ::testing::Test {
protected:
    std::unique_ptr<EnableExtensionView>
    makeView(std::chrono::milliseconds pollInterval = std::chrono::seconds(1))
    {
        return std::make_unique<EnableExtensionView>(EnableExtensionView::Dependencies{
            bridge, extensionId, oauth, *sharedData, skrivo, alerts, appearance, preferences,
            Artwork(mainBundleDirectory()), [this] { ++terminations; }, pollInterval});
    }

    // A view on screen with the disabled panel, whose animation then plays; null when the
    // panel does not come or holds no animation (the caller's test has failed).
    std::unique_ptr<EnableExtensionView> showAnimation()
    {
        bridge.enabled = false;
        auto view = makeView();
        view->show();
        if (!test::waitUntil([&] { return !view->enableExtensionPanel()->isHidden(); }))
            ADD_FAILURE() << "the disabled panel never showed";
        if (!view->animation()) {
            ADD_FAILURE() << "the disabled panel holds no animation";
            return nullptr;
        }
        return view;
    }

    std::vector<std::string> dispatchedNames() const
    {
        std::vector<std::string> names;
        for (const auto& dispatch : bridge.dispatches)
            names.push_back(dispatch.name.toStdString());
        return names;
    }

    HttpsTestServer server;
    std::shared_ptr<MemoryDataContainer> container = std::make_shared<MemoryDataContainer>();
    std::unique_ptr<SharedData> sharedData = makeMemorySharedData(container);
    Skrivo skrivo = makeLoopbackSkrivo(server, *sharedData);
    QueuedExtensionBridge bridge;
    RecordingAlertPresenter alerts;
    FakeAppearance appearance;
    OAuth oauth{true, skrivo, extensionId.toStdString(), bridge, *sharedData, alerts};
    ExtensionPreferences preferences{bridge, extensionId, alerts, skrivo};
    int terminations = 0;
};

} // namespace test

} // namespace lexmira
