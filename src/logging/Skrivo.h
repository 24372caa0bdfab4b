// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Common/AppInfo.h"
#include "Common/ClientInfo.h"
#include "Common/EnvType.h"
#include "logging/CompanionLogger.h"
#include "logging/LogLevel.h"
#include "logging/LogMessage.h"
#include "platform/HttpClient.h"
#include "platform/SystemLog.h"
#include "shared/PartialUserInfoProvider.h"

#include <QUrl>

#include <memory>
#include <optional>
#include <string>

namespace lexmira {

// The remote log client: one fire-and-forget HTTPS POST per message. Nothing is queued, retried
// or reported to the caller; the client's own troubles go to the system log. An immutable value:
// copies share the transport, the system log and the user-info provider and behave identically.
class Skrivo {
public:
    using LogLevel = lexmira::LogLevel;
    using LogMessage = lexmira::LogMessage;

    // port is none in the shipped configuration: the service is reached on the scheme's port. A
    // deployment override may name another.
    Skrivo(std::string domain, std::optional<quint16> port, std::string logPath, std::string origin,
           EnvType envType, AppInfo::Component appComponent, ClientInfo clientInfo,
           std::shared_ptr<const PartialUserInfoProvider> userInfoProvider, std::string sessionId,
           std::shared_ptr<HttpClient> httpClient, std::shared_ptr<SystemLog> systemLog);

    // Posts one message and returns at once. Callable from any thread. The outcome is written
    // to the system log from the transport's worker thread, and only when something went wrong.
    void log(CompanionLogger logger, LogLevel level, const std::string& message) const;

    // "https://<domain>[:<port>]<logPath>"; none when those parts make no URL.
    std::optional<QUrl> url() const;
    // "<component>.<logger>", such as "companion.oauth.handleUrl".
    std::string loggerName(CompanionLogger logger) const;
    // The message as it would be sent now: the user's identifiers are read at this moment.
    LogMessage makeMessage(CompanionLogger logger, LogLevel level,
                           std::optional<std::string> message) const;

    const std::string& domain() const { return domain_; }
    const std::optional<quint16>& port() const { return port_; }
    const std::string& logPath() const { return logPath_; }
    const std::string& origin() const { return origin_; }
    EnvType envType() const { return envType_; }
    AppInfo::Component appComponent() const { return appComponent_; }
    const ClientInfo& clientInfo() const { return clientInfo_; }
    const std::string& sessionId() const { return sessionId_; }

private:
    std::string domain_;
    std::optional<quint16> port_;
    std::string logPath_;
    std::string origin_;
    EnvType envType_;
    AppInfo::Component appComponent_;
    ClientInfo clientInfo_;
    std::shared_ptr<const PartialUserInfoProvider> userInfoProvider_;
    std::string sessionId_;
    std::shared_ptr<HttpClient> httpClient_;
    std::shared_ptr<SystemLog> systemLog_;
};

} // namespace lexmira
