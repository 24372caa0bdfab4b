// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace lexmira {

// Told about every usage event the tracker records. Register a QObject that also derives from
// this; it is held weakly.
class NorvListener {
public:
    virtual ~NorvListener() = default;

    // Called on the main thread after the event was handed to the analytics client.
    virtual void norvDidRecordEvent(const std::string& name,
                                    const nlohmann::ordered_json& props) = 0;
};

} // namespace lexmira
