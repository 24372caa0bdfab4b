// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "logging/LogMessage.h"

namespace lexmira {

void to_json(nlohmann::ordered_json& json, const LogMessage& message)
{
    json = nlohmann::ordered_json::object();
    json["application"] = message.application;
    json["version"] = message.version;
    json["env"] = rawValue(message.env);
    json["sessionId"] = message.sessionId;
    if (message.userId)
        json["userId"] = *message.userId;
    if (message.containerId)
        json["containerId"] = *message.containerId;
    json["logger"] = message.logger;
    json["level"] = rawValue(message.level);
    if (message.message)
        json["message"] = *message.message;
}

} // namespace lexmira
