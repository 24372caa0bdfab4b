// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

// The sign-in callback URL: the parser, and the handler that stores and forwards what it found.
// Input: one byte of circumstances (bit 0: the extension fails the message), then the URL as
// UTF-8.

#include "FuzzSupport.h"

#include "bridge/OAuth.h"
#include "bridge/OAuthUtils.h"
#include "fakes/MemorySharedData.h"
#include "fakes/QueuedExtensionBridge.h"
#include "fakes/RecordingAlertPresenter.h"
#include "shared/SharedUserInfoProvider.h"
#include "util/Json.h"

#include <QUrl>

namespace lexmira {

namespace {

// The callback that carries result, every value byte percent-encoded but the unreserved ones.
QString canonicalCallback(const OAuthResultUrlData& result)
{
    const auto encoded = [](const std::string& value) {
        return QString::fromLatin1(QByteArray::fromStdString(value).toPercentEncoding());
    };
    return QStringLiteral("lexmira.extension://oauth?code=") + encoded(result.code) +
           QStringLiteral("&code_challenge=") + encoded(result.codeChallenge);
}

struct Handler {
    std::shared_ptr<MemoryDataContainer> container = std::make_shared<MemoryDataContainer>();
    std::unique_ptr<SharedData> sharedData = makeMemorySharedData(container);
    QueuedExtensionBridge bridge;
    RecordingAlertPresenter alerts;
    std::shared_ptr<fuzz::CapturingHttpClient> logTransport =
        std::make_shared<fuzz::CapturingHttpClient>();
    Skrivo skrivo{"log.lexmira.test",
                  std::nullopt,
                  "/logv2",
                  "https://www.lexmira.test",
                  EnvType::prod,
                  AppInfo::Component::companion,
                  ClientInfo{"companion-linux", "1.0.0", "lexmiraCompanionLinux"},
                  std::make_shared<SharedUserInfoProvider>(*sharedData),
                  "5B0C6F1E-0000-4000-8000-000000000001",
                  logTransport,
                  std::make_shared<fuzz::DroppingSystemLog>()};
};

Handler* handler;

} // namespace

} // namespace lexmira

using namespace lexmira;

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzz::startApplication();
    handler = new Handler;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const bool extensionFails = data[0] & 1;
    const QString url = QString::fromUtf8(reinterpret_cast<const char*>(data) + 1, qsizetype(size - 1));

    const auto parsed = OAuthUtils::parse(url);
    if (parsed) {
        FUZZ_CHECK(fuzz::isUtf8(parsed->code) && fuzz::isUtf8(parsed->codeChallenge));
        // What was found survives being written out again in the plainest form.
        FUZZ_CHECK(OAuthUtils::parse(canonicalCallback(*parsed)) == parsed);
    }

    handler->bridge.dispatches.clear();
    handler->alerts.alerts.clear();
    handler->bridge.dispatchError =
        extensionFails ? std::optional(ExtensionError{QStringLiteral("com.lexmira.Extension1.Error.Failed"),
                                                      QStringLiteral("The browser is not running")})
                       : std::nullopt;
    {
        OAuth oauth(true, handler->skrivo, "com.lexmira.companion.ext", handler->bridge,
                    *handler->sharedData, handler->alerts);
        oauth.handleGetURL(url);
        FUZZ_CHECK(!oauth.shouldAutoOpenLoginTab);

        // The record in the suite and the message say the same as the parser.
        const auto stored = handler->sharedData->oauthExchangeMessage.value();
        FUZZ_CHECK(stored.has_value() == parsed.has_value());
        if (parsed)
            FUZZ_CHECK(stored->code == parsed->code && stored->codeChallenge == parsed->codeChallenge);
        FUZZ_CHECK(handler->bridge.dispatches.size() == 1);
        const auto& userInfo = handler->bridge.dispatches[0].userInfo;
        FUZZ_CHECK(userInfo && Json::encode(*userInfo));
        if (parsed)
            FUZZ_CHECK((*userInfo)["code"] == parsed->code &&
                       (*userInfo)["codeChallenge"] == parsed->codeChallenge);
        else
            FUZZ_CHECK((*userInfo)["code"].is_null() && (*userInfo)["codeChallenge"].is_null());
        fuzz::settle();
    }
    // A failed message is shown once at most; a delivered one never.
    FUZZ_CHECK(handler->alerts.alerts.size() <= (extensionFails ? 1u : 0u));
    // Every log record of the failure is JSON.
    for (const auto& request : handler->logTransport->take())
        FUZZ_CHECK(Json::decode(request.body));
    return 0;
}
