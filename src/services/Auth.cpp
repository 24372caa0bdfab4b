// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "services/Auth.h"

#include "util/Json.h"

#include <chrono>

namespace lexmira {

namespace {

constexpr auto requestTimeout = std::chrono::seconds(60);

QByteArray bytes(std::string_view text)
{
    return QByteArray(text.data(), qsizetype(text.size()));
}

template <class T>
std::optional<T> optionalField(const nlohmann::ordered_json& json, const char* key)
{
    const auto found = json.find(key);
    if (found == json.end() || found->is_null())
        return std::nullopt;
    return found->get<T>();
}

} // namespace

Auth::Auth(std::string clientType, std::string clientVersion,
           std::shared_ptr<const HttpCookieParser> cookieParser)
    : clientType_(std::move(clientType))
    , clientVersion_(std::move(clientVersion))
    , cookieParser_(std::move(cookieParser))
{
}

std::optional<QUrl> Auth::userUrl(const ServiceHost& accountHost)
{
    QUrl url;
    url.setScheme(QStringLiteral("https"));
    url.setHost(QString::fromStdString(accountHost.host), QUrl::StrictMode);
    if (accountHost.port)
        url.setPort(*accountHost.port);
    url.setPath(QString::fromLatin1(bytes(userPath)));
    if (!url.isValid() || url.host().isEmpty())
        return std::nullopt;
    return url;
}

HttpRequest Auth::makeUserRequest(const QByteArray& method, const QUrl& url,
                                  const std::optional<Tokens>& tokens,
                                  const std::optional<std::string>& containerId) const
{
    HttpRequest request;
    request.url = url;
    request.timeout = requestTimeout;
    request.maxBodyBytes = maxUserResponseBytes;
    request.method = method;
    request.setValue(QByteArray::fromStdString(clientType_), "X-Client-Type");
    request.setValue(QByteArray::fromStdString(clientVersion_), bytes(clientVersionHeader));

    // Insertion order is the order the cookie header lists them in.
    std::vector<std::pair<std::string_view, std::string>> cookies;
    if (tokens) {
        request.setValue(QByteArray::fromStdString(tokens->csrf), "X-CSRF-Token");
        cookies.emplace_back(authCookieName, tokens->auth);
        cookies.emplace_back(csrfCookieName, tokens->csrf);
    }
    if (containerId) {
        request.setValue(QByteArray::fromStdString(*containerId), "X-Container-Id");
        cookies.emplace_back(containerIdCookieName, *containerId);
    }
    if (!cookies.empty()) {
        QByteArray header;
        for (const auto& [name, value] : cookies) {
            if (!header.isEmpty())
                header += "; ";
            header += bytes(name) + '=' + QByteArray::fromStdString(value);
        }
        request.setValue(header, "cookie");
    }
    return request;
}

void Auth::handleUserResponse(const std::optional<QByteArray>& data,
                              const std::optional<HttpResponse>& response,
                              const std::optional<HttpError>& error, const QUrl& url,
                              const std::optional<Tokens>& tokens,
                              const std::optional<std::string>& containerId,
                              const UserCompletion& completion) const
{
    completion(userFromResponse(data, response, error, url, tokens, containerId));
}

std::optional<Auth::User> Auth::userFromResponse(
    const std::optional<QByteArray>& data, const std::optional<HttpResponse>& response,
    const std::optional<HttpError>& error, const QUrl& url, const std::optional<Tokens>& tokens,
    const std::optional<std::string>& containerId) const
{
    if (error || !response)
        return std::nullopt;
    if (response->statusCode != 200 && response->statusCode != 204)
        return std::nullopt;
    if (!data)
        return std::nullopt;
    const auto json = Json::decode(*data);
    if (!json)
        return std::nullopt;
    User user;
    try {
        user = json->get<User>();
    } catch (const nlohmann::json::exception&) {
        return std::nullopt;
    }

    std::optional<std::string> authCookie;
    std::optional<std::string> csrfCookie;
    std::optional<std::string> containerIdCookie;
    for (const auto& cookie : cookieParser_->cookies(response->headerFields, url)) {
        if (cookie.name == authCookieName)
            authCookie = cookie.value;
        else if (cookie.name == csrfCookieName)
            csrfCookie = cookie.value;
        else if (cookie.name == containerIdCookieName)
            containerIdCookie = cookie.value;
    }

    user.tokens =
        authCookie && csrfCookie ? std::optional(Tokens{*authCookie, *csrfCookie}) : tokens;
    user.containerId = containerIdCookie ? containerIdCookie : containerId;
    return user;
}

void to_json(nlohmann::ordered_json& json, const Auth::Tokens& tokens)
{
    json = nlohmann::ordered_json{{"auth", tokens.auth}, {"csrf", tokens.csrf}};
}

void from_json(const nlohmann::ordered_json& json, Auth::Tokens& tokens)
{
    tokens.auth = json.at("auth").get<std::string>();
    tokens.csrf = json.at("csrf").get<std::string>();
}

void to_json(nlohmann::ordered_json& json, const Auth::User& user)
{
    json = nlohmann::ordered_json{
        {"id", user.id},     {"email", user.email},           {"groups", user.groups},
        {"name", user.name}, {"anonymous", user.isAnonymous}, {"isTest", user.isTest}};
    if (user.containerId)
        json["containerId"] = *user.containerId;
    if (user.tokens)
        json["tokens"] = *user.tokens;
}

void from_json(const nlohmann::ordered_json& json, Auth::User& user)
{
    user.id = json.at("id").get<std::string>();
    user.email = json.at("email").get<std::string>();
    user.groups = json.at("groups").get<std::vector<std::string>>();
    user.name = json.at("name").get<std::string>();
    user.isAnonymous = json.at("anonymous").get<bool>();
    user.isTest = json.at("isTest").get<bool>();
    user.containerId = optionalField<std::string>(json, "containerId");
    user.tokens = optionalField<Auth::Tokens>(json, "tokens");
}

} // namespace lexmira
