// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "Common/DeploymentConfig.h"

#include "util/FatalError.h"

#include <nlohmann/json.hpp>

#include <QFile>

namespace lexmira {

namespace {

std::string setting(const nlohmann::json& file, const char* key,
                    const QProcessEnvironment& environment, const char* override)
{
    const QString overridden = environment.value(QString::fromLatin1(override));
    if (!overridden.isEmpty())
        return overridden.toStdString();
    return file.at(key).get<std::string>();
}

} // namespace

std::optional<DeploymentConfig> DeploymentConfig::read(const Bundle& bundle,
                                                       const QProcessEnvironment& environment,
                                                       std::string& error)
{
    const auto path = bundle.pathForResource(QStringLiteral("services"), QStringLiteral("json"));
    if (!path) {
        error = "Could not find resource services.json in the application bundle";
        return std::nullopt;
    }
    QFile file(*path);
    if (!file.open(QIODevice::ReadOnly)) {
        error = "Could not read services.json: " + file.errorString().toStdString();
        return std::nullopt;
    }
    const QByteArray text = file.readAll();
    try {
        const auto json = nlohmann::json::parse(text.begin(), text.end());
        DeploymentConfig config;
        config.accountHost =
            ServiceHost::parse(setting(json, "accountHost", environment, "LEXMIRA_ACCOUNT_HOST"));
        config.analyticsUrl = setting(json, "analyticsUrl", environment, "LEXMIRA_ANALYTICS_URL");
        config.logHost =
            ServiceHost::parse(setting(json, "logHost", environment, "LEXMIRA_LOG_HOST"));
        config.webOrigin = setting(json, "webOrigin", environment, "LEXMIRA_WEB_ORIGIN");
        return config;
    } catch (const nlohmann::json::exception& exception) {
        error = std::string("Could not decode services.json: ") + exception.what();
        return std::nullopt;
    }
}

DeploymentConfig DeploymentConfig::load(const Bundle& bundle,
                                        const QProcessEnvironment& environment)
{
    std::string error;
    if (auto config = read(bundle, environment, error))
        return std::move(*config);
    fatalError(error);
}

} // namespace lexmira
