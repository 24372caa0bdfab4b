// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

// The bodies of the remote log and the analytics requests built from hostile strings: a log
// message and user identifiers, an event name, the user and the event's props. Strings that are
// text arrive intact in a body that is JSON; anything else is dropped as a whole, never sent
// half-written.

#include "FuzzSupport.h"

#include "fakes/MemoryUserDefaults.h"
#include "logging/Skrivo.h"
#include "services/NorvClient.h"
#include "util/Json.h"

#include <fuzzer/FuzzedDataProvider.h>

namespace lexmira {

namespace {

class FixedUserInfo final : public PartialUserInfoProvider {
public:
    std::optional<std::string> containerId() const override { return containerId_; }
    std::optional<std::string> userId() const override { return userId_; }

    std::optional<std::string> userId_;
    std::optional<std::string> containerId_;
};

std::shared_ptr<fuzz::CapturingHttpClient> transport;
std::shared_ptr<FixedUserInfo> logUser;
Skrivo* skrivo;
MemoryUserDefaults* userDefaults;

std::optional<std::string> maybeString(FuzzedDataProvider& input)
{
    if (!input.ConsumeBool())
        return std::nullopt;
    return input.ConsumeRandomLengthString(128);
}

bool allText(std::initializer_list<const std::optional<std::string>*> strings)
{
    for (const auto* text : strings)
        if (*text && !fuzz::isUtf8(**text))
            return false;
    return true;
}

void logMessage(FuzzedDataProvider& input)
{
    logUser->userId_ = maybeString(input);
    logUser->containerId_ = maybeString(input);
    const std::optional<std::string> message = input.ConsumeRandomLengthString(1024);
    skrivo->log(CompanionLogger::oauthHandleUrl, LogLevel::error, *message);

    const auto sent = transport->take();
    if (!allText({&logUser->userId_, &logUser->containerId_, &message})) {
        // Dropped, or sent with the bytes made text.
        FUZZ_CHECK(sent.size() <= 1);
        for (const auto& request : sent)
            FUZZ_CHECK(Json::decode(request.body));
        return;
    }
    FUZZ_CHECK(sent.size() == 1);
    const auto body = Json::decode(sent[0].body);
    FUZZ_CHECK(body && body->is_object());
    FUZZ_CHECK((*body)["message"] == *message);
    if (logUser->userId_)
        FUZZ_CHECK((*body)["userId"] == *logUser->userId_);
    if (logUser->containerId_)
        FUZZ_CHECK((*body)["containerId"] == *logUser->containerId_);
}

void trackEvent(FuzzedDataProvider& input)
{
    NorvClient client("https://www.lexmira.test",
                      QUrl(QStringLiteral("https://analytics.lexmira.test/v2/events")),
                      "companionLinux", "1.0.0", false, true,
                      NorvClient::Platform{transport, userDefaults,
                                           [] { return QDateTime::currentDateTime(); },
                                           [] { return 7; }});
    const std::optional<std::string> userId = input.ConsumeRandomLengthString(64);
    const std::optional<std::string> containerId = input.ConsumeRandomLengthString(64);
    client.setUserInfo(UserInfo{*userId, input.ConsumeBool(), input.ConsumeBool(), *containerId});
    transport->take();

    const std::optional<std::string> name = input.ConsumeRandomLengthString(64);
    const std::optional<std::string> propKey = input.ConsumeRandomLengthString(32);
    const std::optional<std::string> propValue = input.ConsumeRandomLengthString(256);
    // Only strings that are text can be put in a JSON value in the first place.
    const bool keyIsText = fuzz::isUtf8(*propKey) && fuzz::isUtf8(*propValue);
    std::optional<NorvClient::Props> props;
    if (keyIsText)
        props = NorvClient::Props{{*propKey, *propValue}};

    int completions = 0;
    bool accepted = true;
    client.track(*name, props, [&](bool answer) {
        ++completions;
        accepted = answer;
    });
    fuzz::settle();
    const auto sent = transport->take();
    if (!allText({&userId, &containerId, &name})) {
        // Dropped and reported as not accepted, or sent with the bytes made text.
        FUZZ_CHECK(sent.size() <= 1);
        FUZZ_CHECK(sent.size() == 1 || (completions == 1 && !accepted));
        for (const auto& request : sent)
            FUZZ_CHECK(Json::decode(request.body));
        return;
    }
    FUZZ_CHECK(sent.size() == 1);
    const auto body = Json::decode(sent[0].body);
    FUZZ_CHECK(body && body->is_object());
    FUZZ_CHECK((*body)["containerId"] == *containerId);
    const auto& event = (*body)["events"][0];
    FUZZ_CHECK(event["eventName"] == "companionLinux/" + *name);
    FUZZ_CHECK(event["userId"] == *userId);
    if (props && *propKey != "eventName" && *propKey != "userId" && *propKey != "isTest")
        FUZZ_CHECK(event[*propKey] == *propValue);
}

} // namespace

} // namespace lexmira

using namespace lexmira;

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzz::startApplication();
    transport = std::make_shared<fuzz::CapturingHttpClient>();
    logUser = std::make_shared<FixedUserInfo>();
    skrivo = new Skrivo("log.lexmira.test", std::nullopt, "/logv2", "https://www.lexmira.test",
                        EnvType::prod, AppInfo::Component::companion,
                        ClientInfo{"companion-linux", "1.0.0", "lexmiraCompanionLinux"}, logUser,
                        "5B0C6F1E-0000-4000-8000-000000000001", transport,
                        std::make_shared<fuzz::DroppingSystemLog>());
    userDefaults = new MemoryUserDefaults;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    if (input.ConsumeBool())
        logMessage(input);
    else
        trackEvent(input);
    return 0;
}
