// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "Common/EnvCommon.h"

#include "util/FatalError.h"

#include <QFile>

namespace lexmira {

ClientInfo loadClientInfo(const Bundle& bundle)
{
    const auto path = bundle.pathForResource(QStringLiteral("clientInfo"), QStringLiteral("json"));
    if (!path)
        fatalError("Could not find resource clientInfo.json in the application bundle");
    QFile file(*path);
    if (!file.open(QIODevice::ReadOnly))
        fatalError("Could not read clientInfo.json: " + file.errorString().toStdString());
    const QByteArray text = file.readAll();
    try {
        return nlohmann::json::parse(text.begin(), text.end()).get<ClientInfo>();
    } catch (const nlohmann::json::exception& error) {
        fatalError(std::string("Could not decode clientInfo.json: ") + error.what());
    }
}

EnvCommon::EnvCommon(const Bundle& bundle, std::shared_ptr<SharedSuite> sharedSuite,
                     std::shared_ptr<KeychainItems> keychainItems)
    : sharedData(std::move(sharedSuite), std::move(keychainItems))
    , appInfo(AppInfo::Component::companion, bundle)
    , clientInfo(loadClientInfo(bundle))
{
}

} // namespace lexmira
