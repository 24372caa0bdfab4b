// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "extensionhost/AsyncKeychain.h"
#include "extensionhost/FrameReader.h"
#include "extensionhost/HostProtocol.h"
#include "extensionhost/HostSession.h"
#include "fakes/FakeBrokerLink.h"
#include "fakes/MemorySharedSuite.h"
#include "support/SanitizerBuild.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QFile>

#include <cstring>
#include <random>

namespace lexmira {

namespace {

using Json = nlohmann::ordered_json;

// A keychain with nothing in it, quick to answer.
class EmptyKeychainItems final : public KeychainItems {
public:
    Status add(const Query&) override { return success; }
    Status copyMatching(const Query&, QVariant*) override { return itemNotFound; }
    Status remove(const Query&) override { return itemNotFound; }
};

// Generates requests the way a faulty or hostile extension might: well-formed ones with wrong
// values, and mutations of their bytes.
class FrameGenerator {
public:
    explicit FrameGenerator(std::uint32_t seed)
        : random_(seed)
    {
    }

    QByteArray next()
    {
        QByteArray bytes = QByteArray::fromStdString(request().dump());
        switch (pick(12)) {
        case 0:
            mutate(bytes);
            break;
        case 1:
            return garbage();
        default:
            break;
        }
        return bytes;
    }

    std::size_t pick(std::size_t count)
    {
        return std::uniform_int_distribution<std::size_t>(0, count - 1)(random_);
    }

private:
    Json value()
    {
        switch (pick(9)) {
        case 0:
            return nullptr;
        case 1:
            return pick(2) == 0;
        case 2:
            return std::int64_t(random_()) - std::int64_t(1) * 0x7fffffff;
        case 3:
            return 1.5;
        case 4:
            return text();
        case 5:
            return Json::array({1, "x"});
        case 6:
            return Json::object({{"k", text()}});
        case 7:
            return std::uint64_t(0xffffffffffffffffull);
        default:
            return base64();
        }
    }

    std::string text()
    {
        static const std::vector<std::string> samples = {"userInfo",
                                                         "companionContainerId",
                                                         "message.oauthExchangeMessage",
                                                         "message.oauthOpenLoginTabMessage",
                                                         "",
                                                         ".hidden",
                                                         "a/b",
                                                         "../../etc/passwd",
                                                         "%2e%2e",
                                                         "k\xc3\xa9y",
                                                         std::string(80, 'k'),
                                                         std::string(81, 'k'),
                                                         std::string(2000, 'a'),
                                                         "\xe2\x80\x8b",
                                                         "\\u0000"};
        return samples[pick(samples.size())];
    }

    std::string base64()
    {
        static const std::vector<std::string> samples = {
            "", "AA==", "W251bGxd", "c2VjcmV0", "!!!", "AAA", "////", "=", "QQ"};
        return samples[pick(samples.size())];
    }

    Json request()
    {
        static const std::vector<std::string> types = {"hello",
                                                       "reply",
                                                       "suite.get",
                                                       "suite.set",
                                                       "suite.observe",
                                                       "keychain.get",
                                                       "keychain.set",
                                                       "keychain.delete",
                                                       "welcome",
                                                       "dispatch",
                                                       "result",
                                                       "error",
                                                       "",
                                                       "SUITE.GET"};
        Json request = Json::object();
        if (pick(10) != 0)
            request["type"] = pick(8) == 0 ? value() : Json(types[pick(types.size())]);
        if (pick(8) != 0)
            request["id"] = pick(4) == 0 ? value() : Json(std::int64_t(pick(40)));
        if (pick(3) == 0)
            request["version"] = pick(3) == 0 ? value() : Json(1);
        for (const char* field : {"key", "data", "account", "persistentRef", "error"})
            if (pick(2) == 0)
                request[field] = pick(3) == 0                               ? value()
                                 : std::strcmp(field, "data") == 0          ? Json(base64())
                                 : std::strcmp(field, "persistentRef") == 0 ? Json(pick(2) == 0)
                                 : std::strcmp(field, "error") == 0         ? Json(nullptr)
                                                                            : Json(text());
        return request;
    }

    void mutate(QByteArray& bytes)
    {
        const std::size_t edits = 1 + pick(4);
        for (std::size_t i = 0; i < edits && !bytes.isEmpty(); ++i) {
            const auto at = qsizetype(pick(std::size_t(bytes.size())));
            switch (pick(3)) {
            case 0:
                bytes[at] = char(random_());
                break;
            case 1:
                bytes.remove(at, 1);
                break;
            default:
                bytes.insert(at, char(random_()));
                break;
            }
        }
    }

    QByteArray garbage()
    {
        QByteArray bytes(qsizetype(pick(64)), Qt::Uninitialized);
        for (auto& byte : bytes)
            byte = char(random_());
        return bytes;
    }

    std::mt19937 random_;
};

using test::residentSizeIsTheCodes;

std::size_t residentBytes()
{
    QFile statm(QStringLiteral("/proc/self/statm"));
    if (!statm.open(QIODevice::ReadOnly))
        return 0;
    const auto fields = statm.readAll().split(' ');
    return fields.size() > 1 ? std::size_t(fields[1].toULongLong()) * 4096 : 0;
}

TEST(HostSessionFuzz, HundredThousandHostileFramesNeitherCrashNorHangNorGrowWithoutBound)
{
    constexpr std::size_t frameCount = 100'000;
    constexpr std::uint32_t seed = 20261123;
    FrameGenerator generator(seed);
    auto suite = std::make_shared<MemorySharedSuite>();
    AsyncKeychain keychain(std::make_shared<EmptyKeychainItems>());

    // Frames written by the extension, and those the session got before its connection ended.
    std::size_t sent = 0, delivered = 0, answered = 0, connections = 0;
    const std::size_t residentBefore = residentBytes();
    while (delivered < frameCount) {
        ++connections;
        FakeBrokerLink broker;
        HostSession session(BrokerLink::Peer{QStringLiteral("firefox"), QStringLiteral("Firefox"),
                                             QStringLiteral("id@example")},
                            {suite, &keychain, &broker});
        FrameReader reader(HostProtocol::maxFrameSize);
        QObject::connect(&session, &HostSession::frameReady, [&](const QByteArray& frame) {
            ++answered;
            ASSERT_LE(std::size_t(frame.size()), HostProtocol::maxFrameSize);
            const Json parsed = Json::parse(frame.toStdString(), nullptr, false);
            ASSERT_TRUE(parsed.is_object()) << frame.toStdString();
            ASSERT_TRUE(parsed.contains("type"));
        });
        // Most connections greet first, so requests get past the greeting.
        if (generator.pick(5) != 0)
            session.receive(QByteArrayLiteral(R"({"type":"hello","version":1})"));

        while (delivered < frameCount && !session.isFinished() && !reader.failed()) {
            QByteArray stream;
            const std::size_t batch = 1 + generator.pick(16);
            for (std::size_t i = 0; i < batch; ++i, ++sent)
                stream += FrameReader::encode(generator.next());
            // Now and then a length the reader must refuse, or a prefix cut short.
            if (generator.pick(200) == 0) {
                const std::uint32_t length = std::uint32_t(HostProtocol::maxFrameSize) + 1;
                stream += QByteArray(reinterpret_cast<const char*>(&length), 4);
            }
            qsizetype offset = 0;
            while (offset < stream.size()) {
                const auto chunk =
                    std::min<qsizetype>(stream.size() - offset, qsizetype(1 + generator.pick(300)));
                reader.append(stream.constData() + offset, std::size_t(chunk));
                offset += chunk;
                while (const auto frame = reader.next()) {
                    if (session.isFinished())
                        break;
                    session.receive(*frame);
                    ++delivered;
                }
            }
            if (generator.pick(10) == 0)
                broker.dispatch(QStringLiteral("oauthExchange"),
                                generator.pick(2) ? QString() : QStringLiteral(R"({"code":"c"})"));
            if (sent % 64 == 0)
                QCoreApplication::processEvents();
            ASSERT_LE(session.dispatchesInFlight(), HostProtocol::maxDispatchesInFlight);
            ASSERT_LE(session.keychainRequestsInFlight(),
                      HostProtocol::maxKeychainRequestsInFlight);
            ASSERT_LE(session.observedKeys(), HostProtocol::maxObservedKeys);
        }
        QCoreApplication::processEvents();
    }
    EXPECT_GE(delivered, frameCount);
    EXPECT_GT(answered, delivered / 2) << "most frames were answered, not dropped";
    EXPECT_GT(connections, 100u) << "the generator ends connections as well";
    EXPECT_EQ(suite->observerCount(), 0u) << "every ended connection stopped observing";
    // Only the keys written stay behind; nothing accumulates per frame.
    if (residentSizeIsTheCodes) {
        EXPECT_LT(residentBytes(), residentBefore + 64u * 1024 * 1024);
    }
    std::printf("seed %u: %zu frames written, %zu delivered over %zu connections, %zu answers\n",
                seed, sent, delivered, connections, answered);
}

} // namespace

} // namespace lexmira
