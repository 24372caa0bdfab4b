// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "bridge/OAuth.h"
#include "fakes/MemorySharedData.h"
#include "fakes/QueuedExtensionBridge.h"
#include "fakes/RecordingAlertPresenter.h"
#include "fakes/RecordingHttpClient.h"
#include "fakes/RecordingSystemLog.h"
#include "logging/Skrivo.h"
#include "shared/SharedUserInfoProvider.h"
#include "util/Json.h"

#include <memory>
#include <vector>

namespace lexmira {

namespace test {

// The sign-in hand-off over fakes: the shared suite in memory, a bridge that answers from the
// event loop, alerts answered at once, and a log client whose requests are kept, not sent.
struct SignInFixture {
    static constexpr const char* extensionIdentifier = "com.lexmira.companion.ext";

    std::shared_ptr<MemoryDataContainer> container = std::make_shared<MemoryDataContainer>();
    std::unique_ptr<SharedData> sharedData = makeMemorySharedData(container);
    std::shared_ptr<RecordingHttpClient> logTransport = std::make_shared<RecordingHttpClient>();
    std::shared_ptr<RecordingSystemLog> systemLog = std::make_shared<RecordingSystemLog>();
    Skrivo skrivo{"log.lexmira.test",
                  std::nullopt,
                  "/logv2",
                  "https://www.lexmira.test",
                  EnvType::prod,
                  AppInfo::Component::companion,
                  ClientInfo{"companion-linux", "1.0.0", "lexmiraCompanionLinux"},
                  std::make_shared<SharedUserInfoProvider>(*sharedData),
                  "5B0C6F1E-0000-4000-8000-000000000001",
                  logTransport,
                  systemLog};
    QueuedExtensionBridge bridge;
    RecordingAlertPresenter alerts;

    std::unique_ptr<OAuth> makeOAuth(bool shouldAutoOpenLoginTab = true)
    {
        return std::make_unique<OAuth>(shouldAutoOpenLoginTab, skrivo, extensionIdentifier, bridge,
                                       *sharedData, alerts);
    }

    // The bodies of the remote log requests made so far.
    std::vector<nlohmann::ordered_json> logRecords() const
    {
        std::vector<nlohmann::ordered_json> records;
        for (const auto& sent : logTransport->sent())
            if (const auto body = Json::decode(sent.request.body))
                records.push_back(*body);
        return records;
    }

    // The bytes stored under a key of the shared suite.
    std::optional<QByteArray> stored(const char* key) const
    {
        return container->get(QString::fromLatin1(key));
    }
};

} // namespace test

} // namespace lexmira
