// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "platform/LaunchActivation.h"

namespace lexmira {

LaunchActivation LaunchActivation::ofThisProcess()
{
    return {qEnvironmentVariable("XDG_ACTIVATION_TOKEN"),
            qEnvironmentVariable("DESKTOP_STARTUP_ID")};
}

} // namespace lexmira
