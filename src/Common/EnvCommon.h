// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Common/AppInfo.h"
#include "Common/Bundle.h"
#include "Common/ClientInfo.h"
#include "Common/EnvType.h"
#include "shared/Keychain.h"
#include "shared/SharedData.h"

#include <memory>

namespace lexmira {

// Reads clientInfo.json from the bundle; a missing or undecodable file stops the process.
ClientInfo loadClientInfo(const Bundle& bundle);

// The identity of this client and the state it shares with the extension. The shared state comes
// first, before the identity. Immutable after construction apart from the shared values;
// readable from any thread.
class EnvCommon {
public:
    // sharedSuite is the opened application-group suite, or null when it could not be opened (the
    // shared values then do nothing); keychainItems is the keychain behind sharedData.keychain.
    EnvCommon(const Bundle& bundle, std::shared_ptr<SharedSuite> sharedSuite,
              std::shared_ptr<KeychainItems> keychainItems);
    virtual ~EnvCommon() = default;
    EnvCommon(const EnvCommon&) = delete;
    EnvCommon& operator=(const EnvCommon&) = delete;

    SharedData sharedData;
    const AppInfo appInfo;
    const ClientInfo clientInfo;
    const EnvType envType = EnvType::prod;
};

} // namespace lexmira
