// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Common/Bundle.h"
#include "Common/ServiceHost.h"

#include <QProcessEnvironment>

#include <optional>
#include <string>

namespace lexmira {

// Where the services of this deployment are: the bundle's services.json, each value replaceable
// from the environment (LEXMIRA_ACCOUNT_HOST, LEXMIRA_ANALYTICS_URL, LEXMIRA_LOG_HOST,
// LEXMIRA_WEB_ORIGIN) for tests and staging.
struct DeploymentConfig {
    ServiceHost accountHost;  // the account service
    std::string analyticsUrl; // the analytics endpoint: "https://" and a host, no path
    ServiceHost logHost;      // the remote log service
    std::string webOrigin;    // the product's web site: "https://" and a host, no path

    // An override that is set and not empty wins over the file. A missing or undecodable
    // services.json, or one that lacks a value that is not overridden, stops the process.
    static DeploymentConfig
    load(const Bundle& bundle,
         const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment());
    // The same without stopping: none, with the reason in error, where load would stop.
    static std::optional<DeploymentConfig> read(const Bundle& bundle,
                                                const QProcessEnvironment& environment,
                                                std::string& error);
};

} // namespace lexmira
