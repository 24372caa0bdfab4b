// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "logging/Skrivo.h"
#include "platform/ExtensionBridge.h"

#include <nlohmann/json.hpp>

#include <QObject>
#include <QString>

#include <functional>
#include <optional>
#include <string_view>

namespace lexmira {

// The messages the application sends to the extension. The wire name of each is its case name.
enum class CompanionMessage { oauthExchange, oauthOpenLoginTab, openSafari };

std::string_view rawValue(CompanionMessage message);

// Sends message to the extension, the way every sender does: the caller writes the shared
// record that accompanies the message first (the extension, woken by the message, reads it),
// then calls this. userInfo none sends no user info at all.
//
// The bridge completes on a thread of its own choosing. When the dispatch fails and logger is
// given, one record "Could not continue to extension: " followed by the error's description goes
// to skrivo at level error, under logger, from that thread. reaction is the sender's own
// response: it runs on context's thread (the sender's, the main thread), asynchronously, with the
// error or none, and not at all once context is gone; it is scheduled before the log record is
// posted. Nothing is retried. Call from the main thread.
void sendCompanionMessage(ExtensionBridge& bridge, const QString& extensionIdentifier,
                          CompanionMessage message,
                          const std::optional<nlohmann::ordered_json>& userInfo,
                          const Skrivo& skrivo, std::optional<CompanionLogger> logger,
                          QObject* context,
                          std::function<void(std::optional<ExtensionError> error)> reaction);

} // namespace lexmira
