// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

// The account service's answer: status, header fields with their Set-Cookie fields (read by the
// platform's cookie parser), and body, against the tokens and container identifier the request
// was made with. The user read from it is sent back on the next request.

#include "FuzzSupport.h"

#include "services/Auth.h"

#include <fuzzer/FuzzedDataProvider.h>

namespace lexmira {

namespace {

const QUrl userUrl(QStringLiteral("https://account.lexmira.test/v3/user/oranonymous"));

Auth* auth;

// What an earlier answer may have left: cookie values never hold line breaks or NUL.
std::string storedString(FuzzedDataProvider& input)
{
    std::string text = input.ConsumeRandomLengthString(64);
    std::erase_if(text, [](char c) { return c == '\r' || c == '\n' || c == '\0'; });
    return text;
}

// A header value the next request may carry without ending its field early.
bool fitsInOneField(const QByteArray& value)
{
    return !value.contains('\r') && !value.contains('\n') && !value.contains('\0');
}

} // namespace

} // namespace lexmira

using namespace lexmira;

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzz::startApplication();
    auth = new Auth("companion-linux", "1.0.0", HttpCookieParser::create());
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    std::optional<Auth::Tokens> tokens;
    if (input.ConsumeBool())
        tokens = Auth::Tokens{storedString(input), storedString(input)};
    std::optional<std::string> containerId;
    if (input.ConsumeBool())
        containerId = storedString(input);

    HttpResponse response;
    response.url = userUrl;
    response.statusCode = input.PickValueInArray({200, 204, 200, 401, 500});
    const int fields = input.ConsumeIntegralInRange(0, 4);
    for (int i = 0; i < fields; ++i) {
        static const char* const names[] = {"Set-Cookie", "set-cookie", "SET-COOKIE",
                                            "Content-Type", "Set-Cookie2"};
        const QByteArray name = input.ConsumeBool()
                                    ? QByteArray(input.PickValueInArray(names))
                                    : QByteArray::fromStdString(input.ConsumeRandomLengthString(16));
        response.headerFields.emplace_back(
            name, QByteArray::fromStdString(input.ConsumeRandomLengthString(512)));
    }
    const auto remaining = input.ConsumeRemainingBytes<char>();
    const QByteArray body(remaining.data(), qsizetype(remaining.size()));

    int completions = 0;
    std::optional<Auth::User> user;
    auth->handleUserResponse(body, response, std::nullopt, userUrl, tokens, containerId,
                             [&](std::optional<Auth::User> answer) {
                                 ++completions;
                                 user = std::move(answer);
                             });
    FUZZ_CHECK(completions == 1);
    if (!user)
        return 0;
    FUZZ_CHECK(response.statusCode == 200 || response.statusCode == 204);

    // The user as the companion keeps it.
    nlohmann::ordered_json json = *user;
    FUZZ_CHECK(json.get<Auth::User>() == *user);

    // What came back is what the next request sends.
    const HttpRequest next = auth->makeUserRequest("GET", userUrl, user->tokens, user->containerId);
    for (const auto& [name, value] : next.headerFields)
        FUZZ_CHECK(fitsInOneField(value));
    return 0;
}
