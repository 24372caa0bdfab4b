// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "logging/Skrivo.h"

#include "util/Json.h"

#include <chrono>

namespace lexmira {

namespace {

constexpr auto application = "extensionSafari";
constexpr auto requestTimeout = std::chrono::seconds(60);

// The encoder's own explanation of why value cannot be written as JSON.
std::string encodingFailure(const nlohmann::ordered_json& value)
{
    try {
        (void)value.dump();
    } catch (const nlohmann::json::exception& error) {
        return error.what();
    }
    return "the message could not be encoded";
}

void reportOutcome(SystemLog& systemLog, const std::optional<HttpResponse>& response,
                   const std::optional<HttpError>& error)
{
    if (error)
        systemLog.error("Error: skrivo request failed: " +
                        error->localizedDescription.toStdString());
    if (!response) {
        systemLog.error("Error: skrivo response has invalid type");
        return;
    }
    if (response->statusCode >= 400 && response->statusCode < 500)
        systemLog.error("Error: skrivo request bad request " +
                        std::to_string(response->statusCode));
}

} // namespace

Skrivo::Skrivo(std::string domain, std::optional<quint16> port, std::string logPath,
               std::string origin, EnvType envType, AppInfo::Component appComponent,
               ClientInfo clientInfo,
               std::shared_ptr<const PartialUserInfoProvider> userInfoProvider,
               std::string sessionId, std::shared_ptr<HttpClient> httpClient,
               std::shared_ptr<SystemLog> systemLog)
    : domain_(std::move(domain))
    , port_(port)
    , logPath_(std::move(logPath))
    , origin_(std::move(origin))
    , envType_(envType)
    , appComponent_(appComponent)
    , clientInfo_(std::move(clientInfo))
    , userInfoProvider_(std::move(userInfoProvider))
    , sessionId_(std::move(sessionId))
    , httpClient_(std::move(httpClient))
    , systemLog_(std::move(systemLog))
{
}

void Skrivo::log(CompanionLogger logger, LogLevel level, const std::string& message) const
{
    const auto requestUrl = url();
    if (!requestUrl) {
        systemLog_->error("Error: skrivo request failed to create url");
        return;
    }
    const nlohmann::ordered_json body = makeMessage(logger, level, message);
    const auto bytes = Json::encode(body);
    if (!bytes) {
        systemLog_->error("Error: skrivo request serialization error: " + encodingFailure(body));
        systemLog_->error("Error: skrivo request failed to serialize data");
        return;
    }

    HttpRequest request;
    request.url = *requestUrl;
    request.timeout = requestTimeout;
    // Only the status tells whether the record arrived.
    request.maxBodyBytes = 0;
    request.method = "POST";
    request.setValue(QByteArray::fromStdString(origin_), "Origin");
    request.setValue("application/json", "Content-Type");
    request.body = *bytes;
    httpClient_->send(std::move(request),
                      [systemLog = systemLog_](std::optional<QByteArray>,
                                               std::optional<HttpResponse> response,
                                               std::optional<HttpError> error) {
                          reportOutcome(*systemLog, response, error);
                      });
}

std::optional<QUrl> Skrivo::url() const
{
    QUrl url;
    url.setScheme(QStringLiteral("https"));
    url.setHost(QString::fromStdString(domain_), QUrl::StrictMode);
    if (port_)
        url.setPort(*port_);
    url.setPath(QString::fromStdString(logPath_), QUrl::StrictMode);
    if (!url.isValid() || url.host().isEmpty())
        return std::nullopt;
    return url;
}

std::string Skrivo::loggerName(CompanionLogger logger) const
{
    return std::string(rawValue(appComponent_)) + "." + std::string(rawValue(logger));
}

LogMessage Skrivo::makeMessage(CompanionLogger logger, LogLevel level,
                               std::optional<std::string> message) const
{
    LogMessage result;
    result.application = application;
    result.version = clientInfo_.clientVersion;
    result.env = envType_;
    result.sessionId = sessionId_;
    result.userId = userInfoProvider_->userId();
    result.containerId = userInfoProvider_->containerId();
    result.logger = loggerName(logger);
    result.level = level;
    result.message = std::move(message);
    return result;
}

} // namespace lexmira
