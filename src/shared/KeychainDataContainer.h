// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "shared/Keychain.h"

namespace lexmira {

// A keychain store named together with the access level to write with. Not a DataContainer:
// keychain items cannot be observed.
struct KeychainDataContainer {
    Keychain keychain;
    Keychain::Access access = Keychain::Access::accessibleWhenUnlocked;
};

} // namespace lexmira
