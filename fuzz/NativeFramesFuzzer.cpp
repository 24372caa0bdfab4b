// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

// What a browser writes to the extension host: the byte stream cut into frames, each frame
// handled by one connection's session. Input: one byte of circumstances (bit 0: the extension
// greets first; the rest: how the stream is split into reads), then the stream.

#include "FuzzSupport.h"

#include "extensionhost/AsyncKeychain.h"
#include "extensionhost/FrameReader.h"
#include "extensionhost/HostProtocol.h"
#include "extensionhost/HostSession.h"
#include "fakes/FakeBrokerLink.h"
#include "fakes/MemorySharedSuite.h"

namespace lexmira {

namespace {

// A keychain with nothing in it, quick to answer.
class EmptyKeychainItems final : public KeychainItems {
public:
    Status add(const Query&) override { return success; }
    Status copyMatching(const Query&, QVariant*) override { return itemNotFound; }
    Status remove(const Query&) override { return itemNotFound; }
};

AsyncKeychain* keychain;

void checkFrameOut(const QByteArray& frame)
{
    FUZZ_CHECK(std::size_t(frame.size()) <= HostProtocol::maxFrameSize);
    const auto json = nlohmann::ordered_json::parse(frame.begin(), frame.end(), nullptr, false);
    FUZZ_CHECK(json.is_object() && json.contains("type") && json["type"].is_string());
}

} // namespace

} // namespace lexmira

using namespace lexmira;

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    fuzz::startApplication();
    keychain = new AsyncKeychain(std::make_shared<EmptyKeychainItems>());
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const bool greets = data[0] & 1;
    const std::size_t readSize = 1 + std::size_t(data[0] >> 1) * 7;
    const char* stream = reinterpret_cast<const char*>(data) + 1;
    const std::size_t streamSize = size - 1;

    auto suite = std::make_shared<MemorySharedSuite>();
    FakeBrokerLink broker;
    HostSession session(BrokerLink::Peer{QStringLiteral("firefox"), QStringLiteral("Firefox"),
                                         QStringLiteral("id@example")},
                        {suite, keychain, &broker});
    QObject::connect(&session, &HostSession::frameReady, checkFrameOut);
    bool finishedOnce = false;
    QObject::connect(&session, &HostSession::finished, [&](const QString&) {
        FUZZ_CHECK(!finishedOnce);
        finishedOnce = true;
    });
    if (greets)
        session.receive(QByteArrayLiteral(R"({"type":"hello","version":1})"));

    FrameReader reader(HostProtocol::maxFrameSize);
    // The frames read, written back: always the start of the stream.
    QByteArray framed;
    for (std::size_t offset = 0; offset < streamSize; offset += readSize) {
        reader.append(stream + offset, std::min(readSize, streamSize - offset));
        while (const auto frame = reader.next()) {
            FUZZ_CHECK(std::size_t(frame->size()) <= HostProtocol::maxFrameSize);
            framed += FrameReader::encode(*frame);
            session.receive(*frame);
        }
        if (reader.failed())
            break;
    }
    FUZZ_CHECK(QByteArray::fromRawData(stream, qsizetype(streamSize)).startsWith(framed));
    if (!reader.failed())
        FUZZ_CHECK(reader.hasPartialFrame() == (std::size_t(framed.size()) < streamSize));

    broker.dispatch(QStringLiteral("oauthExchange"), QStringLiteral(R"({"code":"c"})"));
    fuzz::settle();
    FUZZ_CHECK(session.dispatchesInFlight() <= HostProtocol::maxDispatchesInFlight);
    FUZZ_CHECK(session.keychainRequestsInFlight() <= HostProtocol::maxKeychainRequestsInFlight);
    FUZZ_CHECK(session.observedKeys() <= HostProtocol::maxObservedKeys);
    return 0;
}
