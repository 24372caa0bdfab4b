// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtGlobal>

#include <optional>
#include <string>
#include <string_view>

namespace lexmira {

// Where a service is reached: a host name and, only when a deployment names one, a port.
struct ServiceHost {
    std::string host;
    std::optional<quint16> port;

    // "host", "host:port", "[v6 address]" or "[v6 address]:port". Text that does not end in a
    // valid port after its one colon is all host name, to be judged by whoever builds a URL of it.
    static ServiceHost parse(std::string_view text);

    bool operator==(const ServiceHost&) const = default;
};

} // namespace lexmira
