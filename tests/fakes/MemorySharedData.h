// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "fakes/MemoryDataContainer.h"
#include "shared/SharedData.h"

#include <memory>

namespace lexmira {

// A SharedData whose four values live in container, with no keychain behind it (every keychain
// call fails). Notifications arrive synchronously on the writing thread.
inline std::unique_ptr<SharedData>
makeMemorySharedData(std::shared_ptr<MemoryDataContainer> container)
{
    return std::make_unique<SharedData>(std::shared_ptr<DataContainer>(std::move(container)),
                                        std::shared_ptr<KeychainItems>());
}

} // namespace lexmira
