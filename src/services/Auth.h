// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Common/ServiceHost.h"
#include "platform/HttpClient.h"
#include "platform/HttpCookieParser.h"

#include <nlohmann/json.hpp>

#include <QUrl>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lexmira {

// The account service client: builds the request that asks who the user is and reads the answer.
// Holds no session state: each call is given the tokens and container identifier to send and
// hands back the ones to keep. Immutable, so usable from any thread.
class Auth {
public:
    // The largest answer to the user request that is read; a user record is a few hundred bytes.
    static constexpr qsizetype maxUserResponseBytes = 64 * 1024;

    struct Tokens {
        std::string auth; // sent as the cookie "lxauth"
        std::string csrf; // sent as the header "X-CSRF-Token" and the cookie "csrf-token"

        bool operator==(const Tokens&) const = default;
    };

    struct User {
        std::string id;
        std::string email;
        std::vector<std::string> groups;
        std::string name;
        bool isAnonymous = false; // "anonymous" in JSON
        bool isTest = false;
        std::optional<std::string> containerId;
        std::optional<Tokens> tokens;

        bool operator==(const User&) const = default;
    };

    // Called exactly once, on the thread that called handleUserResponse.
    using UserCompletion = std::function<void(std::optional<User> user)>;

    static constexpr std::string_view containerIdCookieName = "norv_containerId";
    static constexpr std::string_view authCookieName = "lxauth";
    static constexpr std::string_view csrfCookieName = "csrf-token";
    static constexpr std::string_view clientVersionHeader = "X-Client-Version";
    static constexpr std::string_view userPath = "/v3/user/oranonymous";

    Auth(std::string clientType, std::string clientVersion,
         std::shared_ptr<const HttpCookieParser> cookieParser);

    // "https://<host>[:<port>]/v3/user/oranonymous"; none when the host makes no URL.
    static std::optional<QUrl> userUrl(const ServiceHost& accountHost);

    // The user request. It carries the client's headers and, when given, the tokens and the
    // container identifier both as headers and in one hand-built "cookie" header. No body.
    HttpRequest makeUserRequest(const QByteArray& method, const QUrl& url,
                                const std::optional<Tokens>& tokens,
                                const std::optional<std::string>& containerId) const;

    // Reads the outcome of the request made by makeUserRequest for url with the same tokens and
    // containerId. Every failure (transport error, no response, a status other than 200 and 204,
    // no data, a body that is not a user) completes with none, silently. The user's tokens and
    // container identifier come from the response's cookies, else from the caller's values; the
    // body's own are discarded.
    void handleUserResponse(const std::optional<QByteArray>& data,
                            const std::optional<HttpResponse>& response,
                            const std::optional<HttpError>& error, const QUrl& url,
                            const std::optional<Tokens>& tokens,
                            const std::optional<std::string>& containerId,
                            const UserCompletion& completion) const;

    const std::string& clientType() const { return clientType_; }
    const std::string& clientVersion() const { return clientVersion_; }

private:
    std::optional<User> userFromResponse(const std::optional<QByteArray>& data,
                                         const std::optional<HttpResponse>& response,
                                         const std::optional<HttpError>& error, const QUrl& url,
                                         const std::optional<Tokens>& tokens,
                                         const std::optional<std::string>& containerId) const;

    std::string clientType_;
    std::string clientVersion_;
    std::shared_ptr<const HttpCookieParser> cookieParser_;
};

void to_json(nlohmann::ordered_json& json, const Auth::Tokens& tokens);
// Both keys are required strings; throws nlohmann::json::exception otherwise.
void from_json(const nlohmann::ordered_json& json, Auth::Tokens& tokens);
// Keys in field order; "containerId" and "tokens" only when present.
void to_json(nlohmann::ordered_json& json, const Auth::User& user);
// "id", "email", "groups", "name", "anonymous" and "isTest" are required with their types;
// "containerId" and "tokens" may be absent or null. Throws nlohmann::json::exception otherwise.
void from_json(const nlohmann::ordered_json& json, Auth::User& user);

} // namespace lexmira
