// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "bridge/CompanionMessage.h"

#include "util/ThreadHandOff.h"

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
                          QObject* context,
                          std::function<void(std::optional<ExtensionError> error)> reaction)
{
    const std::string_view name = rawValue(message);
    // No context for the bridge: the log record is posted from wherever the answer arrives, and
    // only the reaction travels to the sender's thread.
    bridge.dispatchMessage(
        QString::fromLatin1(name.data(), qsizetype(name.size())), extensionIdentifier, userInfo,
        nullptr,
        [skrivo, logger, react = ThreadHandOff::bind(context, std::move(reaction))](
            std::optional<ExtensionError> error) {
            if (react)
                react(error);
            if (error && logger)
                skrivo.log(*logger, LogLevel::error,
                           std::string(continueFailurePrefix) +
                               error->localizedDescription.toStdString());
        });
}

} // namespace lexmira
