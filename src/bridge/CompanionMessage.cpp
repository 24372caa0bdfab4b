// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "bridge/CompanionMessage.h"

#include "util/FutureFunc.h"

#include <string>
#include <utility>

namespace lexmira {

namespace {

constexpr std::string_view continueFailurePrefix = "Could not continue to extension: ";

} // namespace

std::string_view rawValue(CompanionMessage message)
{
    switch (message) {
    case CompanionMessage::oauthExchange:
        return "oauthExchange";
    case CompanionMessage::oauthOpenLoginTab:
        return "oauthOpenLoginTab";
    case CompanionMessage::openSafari:
        return "openSafari";
    }
    return {};
}

void sendCompanionMessage(ExtensionBridge& bridge, const QString& extensionIdentifier,
                          CompanionMessage message,
                          const std::optional<nlohmann::ordered_json>& userInfo,
                          const Skrivo& skrivo, std::optional<CompanionLogger> logger,
                          std::function<void(std::optional<ExtensionError> error)> reaction)
{
    const std::string_view name = rawValue(message);
    bridge.dispatchMessage(
        QString::fromLatin1(name.data(), qsizetype(name.size())), extensionIdentifier, userInfo,
        [skrivo, logger, reaction = std::move(reaction)](std::optional<ExtensionError> error) {
            if (reaction)
                FutureFunc::onMain([reaction, error] { reaction(error); });
            if (error && logger)
                skrivo.log(*logger, LogLevel::error,
                           std::string(continueFailurePrefix) +
                               error->localizedDescription.toStdString());
        });
}

} // namespace lexmira
