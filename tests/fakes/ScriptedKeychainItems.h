// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/KeychainItems.h"

#include <string>
#include <vector>

namespace lexmira {

// Answers every call with the status set for its operation and records each query it was
// given, in order. Stands in for the keychain where a test is about the queries, not storage.
class ScriptedKeychainItems final : public KeychainItems {
public:
    struct Call {
        std::string operation; // "add", "copyMatching" or "remove"
        Query query;
    };

    Status addStatus = success;
    Status copyStatus = success;
    Status removeStatus = success;
    // Put into copyMatching's result when copyStatus is success.
    QVariant copyResult;

    std::vector<Call> calls;

    Status add(const Query& query) override
    {
        calls.push_back({"add", query});
        return addStatus;
    }

    Status copyMatching(const Query& query, QVariant* result) override
    {
        calls.push_back({"copyMatching", query});
        if (copyStatus == success && result)
            *result = copyResult;
        return copyStatus;
    }

    Status remove(const Query& query) override
    {
        calls.push_back({"remove", query});
        return removeStatus;
    }
};

} // namespace lexmira
