// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "diagnostics/Diagnosis.h"
#include "extensionhost/Installations.h"
#include "platform/SystemHealth.h"

#include <vector>

namespace lexmira {

// Judges the extension's side: where the host is registered, whether the bus can start the
// broker, which browsers are connected and whether the extension is enabled. Shared by the
// companion's doctor and the host's status. Texts are translated in the context
// "ExtensionHealth".
namespace ExtensionHealth {

std::vector<Check> checks(const std::vector<Installation>& installations,
                          const BrokerHealth& broker);

} // namespace ExtensionHealth

} // namespace lexmira
