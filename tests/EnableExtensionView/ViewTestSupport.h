// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "fakes/CountingHttpClient.h"
#include "fakes/MemorySharedData.h"
#include "fakes/RecordingSystemLog.h"
#include "logging/Skrivo.h"
#include "shared/SharedUserInfoProvider.h"
#include "support/HttpsTestServer.h"

#include <memory>

namespace lexmira {

namespace test {

// A remote log client that posts to a loopback HTTPS server, reading the user from sharedData.
inline Skrivo makeLoopbackSkrivo(const HttpsTestServer& server, const SharedData& sharedData)
{
    qputenv("LEXMIRA_EXTRA_CA_FILE", HttpsTestServer::caFile().toUtf8());
    return Skrivo("127.0.0.1", server.port(), "/logv2", "https://www.lexmira.test", EnvType::prod,
                  AppInfo::Component::companion, ClientInfo{"companion-linux", "1.0.0", "n"},
                  std::make_shared<SharedUserInfoProvider>(sharedData), "SESSION",
                  std::shared_ptr<HttpClient>(HttpClient::create()),
                  std::make_shared<RecordingSystemLog>());
}

// The log records the server received: (logger, message) pairs.
inline std::vector<std::pair<std::string, std::string>> logRecords(const HttpsTestServer& server)
{
    std::vector<std::pair<std::string, std::string>> records;
    for (const auto& request : server.requests())
        if (const auto body = request.json())
            records.emplace_back(body->value("logger", ""), body->value("message", ""));
    return records;
}

} // namespace test

} // namespace lexmira
