// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "QtPrinters.h"
#include "SignInFixture.h"
#include "bridge/OAuthUtils.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>

namespace lexmira {

namespace {

using namespace std::chrono_literals;

// Builds callback-like URLs from plausible and hostile parts, then mutates some of them at
// random. Deterministic for a given seed.
class UrlGenerator {
public:
    explicit UrlGenerator(std::uint32_t seed)
        : random_(seed)
    {
    }

    QString next()
    {
        QString url = chance(1, 2) ? callback() : assembled();
        const int mutations = chance(1, 2) ? 0 : int(1 + below(4));
        for (int i = 0; i < mutations; ++i)
            mutate(url);
        return url;
    }

private:
    // A well-formed callback, its items in any order, with harmless extras.
    QString callback()
    {
        QStringList items{QStringLiteral("code=") + cleanValue(),
                          QStringLiteral("code_challenge=") + cleanValue()};
        if (chance(1, 3))
            items.insert(qsizetype(below(3)), QStringLiteral("state=") + cleanValue());
        if (chance(1, 2))
            items.swapItemsAt(0, items.size() - 1);
        return QStringLiteral("lexmira.extension://oauth") +
               (chance(1, 2) ? QStringLiteral("/") : QString()) + QLatin1Char('?') +
               items.join(QLatin1Char('&'));
    }

    // Any combination of plausible and hostile parts.
    QString assembled()
    {
        QString url = pick(schemes) + pick(separators) + pick(hosts) + pick(paths);
        if (chance(9, 10)) {
            url += QLatin1Char('?');
            const int items = int(below(6));
            for (int i = 0; i < items; ++i) {
                if (i > 0)
                    url += pick(itemSeparators);
                url += pick(names);
                if (chance(4, 5))
                    url += QLatin1Char('=') + value();
            }
        }
        if (chance(1, 8))
            url += QLatin1Char('#') + value();
        return url;
    }

    static inline const std::array schemes{QStringLiteral("lexmira.extension"),
                                           QStringLiteral("lexmira.extension"),
                                           QStringLiteral("lexmira.extension"),
                                           QStringLiteral("LEXMIRA.extension"),
                                           QStringLiteral("lexmira.Extension"),
                                           QStringLiteral("https"),
                                           QStringLiteral(""),
                                           QStringLiteral("lexmira-extension"),
                                           QStringLiteral("1exmira.extension")};
    static inline const std::array separators{QStringLiteral("://"), QStringLiteral("://"),
                                              QStringLiteral(":"),   QStringLiteral(":///"),
                                              QStringLiteral(":/"),  QStringLiteral("//")};
    static inline const std::array hosts{
        QStringLiteral("oauth"),         QStringLiteral("oauth"),
        QStringLiteral("oauth"),         QStringLiteral("OAuth"),
        QStringLiteral("user:pw@oauth"), QStringLiteral("oauth:8080"),
        QStringLiteral("[::1]"),         QStringLiteral(""),
        QStringLiteral("öauth"),         QStringLiteral("o%61uth"),
        QStringLiteral("oauth."),        QStringLiteral("[oauth")};
    static inline const std::array paths{QStringLiteral(""),    QStringLiteral(""),
                                         QStringLiteral("/"),   QStringLiteral("/callback"),
                                         QStringLiteral("//"),  QStringLiteral("/%2F"),
                                         QStringLiteral("/./"), QStringLiteral("/é")};
    static inline const std::array names{
        QStringLiteral("code"),           QStringLiteral("code"),
        QStringLiteral("code_challenge"), QStringLiteral("code_challenge"),
        QStringLiteral("codeChallenge"),  QStringLiteral("CODE"),
        QStringLiteral("c%6Fde"),         QStringLiteral(""),
        QStringLiteral("state"),          QStringLiteral("code%5Fchallenge")};
    static inline const std::array itemSeparators{QStringLiteral("&"), QStringLiteral("&"),
                                                  QStringLiteral("&&"), QStringLiteral(";")};
    static inline const std::array cleanFragments{
        QStringLiteral("a"),   QStringLiteral("Z9"),     QStringLiteral("-._~"),
        QStringLiteral("%20"), QStringLiteral("%2B"),    QStringLiteral("+"),
        QStringLiteral("="),   QStringLiteral("%C3%A9"), QStringLiteral("é"),
        QStringLiteral("🔑"),   QStringLiteral("/")};
    static inline const std::array fragments{
        QStringLiteral("a"),    QStringLiteral("Z9"),     QStringLiteral("-._~"),
        QStringLiteral("%20"),  QStringLiteral("%2B"),    QStringLiteral("+"),
        QStringLiteral("="),    QStringLiteral("%"),      QStringLiteral("%zz"),
        QStringLiteral("%FF"),  QStringLiteral("%C3%A9"), QStringLiteral("é"),
        QStringLiteral("日本"), QStringLiteral("🔑"),      QStringLiteral(" "),
        QStringLiteral("/"),    QStringLiteral("?"),      QStringLiteral("#"),
        QStringLiteral("%00"),  QStringLiteral("\\"),     QStringLiteral("\"")};

    QString cleanValue()
    {
        QString text;
        const int parts = int(below(5));
        for (int i = 0; i < parts; ++i)
            text += pick(cleanFragments);
        return text;
    }

    QString value()
    {
        QString text;
        const int parts = int(below(6));
        for (int i = 0; i < parts; ++i)
            text += pick(fragments);
        return text;
    }

    void mutate(QString& url)
    {
        const qsizetype at = url.isEmpty() ? 0 : qsizetype(below(std::uint32_t(url.size())));
        switch (below(8)) {
        case 0:
            url.insert(at, QChar(char16_t(below(0x80))));
            break;
        case 1:
            url.remove(at, 1);
            break;
        case 2:
            url.insert(at, url.mid(at, qsizetype(below(12))));
            break;
        case 3:
            if (at < url.size())
                url[at] = url[at].isUpper() ? url[at].toLower() : url[at].toUpper();
            break;
        case 4:
            url.truncate(at);
            break;
        case 5: // a lone surrogate: not representable in UTF-8
            url.insert(at, QChar(char16_t(0xD800 + below(0x800))));
            break;
        case 6:
            url.insert(at, QChar(char16_t(0x80 + below(0xD000))));
            break;
        case 7:
            if (chance(1, 50))
                url.insert(at, QString(qsizetype(1000 + below(20000)), QLatin1Char('a')));
            break;
        }
    }

    template <class Array>
    const QString& pick(const Array& items)
    {
        return items[below(std::uint32_t(items.size()))];
    }
    std::uint32_t below(std::uint32_t bound)
    {
        return std::uniform_int_distribution<std::uint32_t>(0, bound - 1)(random_);
    }
    bool chance(std::uint32_t in, std::uint32_t outOf) { return below(outOf) < in; }

    std::mt19937 random_;
};

constexpr std::uint32_t seed = 0x5EED'2024;
constexpr int urlCount = 100'000;

TEST(SignInFuzz, GeneratedAndMutatedUrlsNeverBreakTheParserAndValidOnesAreRealCallbacks)
{
    UrlGenerator generator(seed);
    int validCount = 0;
    for (int i = 0; i < urlCount; ++i) {
        const QString url = generator.next();
        const auto result = OAuthUtils::parse(url);
        ASSERT_EQ(result, OAuthUtils::parse(url)) << "not deterministic for " << qPrintable(url);
        if (!result)
            continue;
        ++validCount;
        ASSERT_TRUE(url.startsWith(QStringLiteral("lexmira.extension:"))) << qPrintable(url);
        ASSERT_TRUE(url.contains(QStringLiteral("oauth"))) << qPrintable(url);
        ASSERT_TRUE(url.contains(QLatin1Char('?'))) << qPrintable(url);
    }
    // The generator is worth something only if it also produces real callbacks.
    EXPECT_GT(validCount, urlCount / 10) << "seed " << seed;
}

TEST(SignInFuzz, EveryUrlThroughTheHandlerStoresAndSendsExactlyWhatTheParserSays)
{
    test::SignInFixture fixture;
    const auto oauth = fixture.makeOAuth();
    UrlGenerator generator(seed + 1);
    std::mt19937 failures(seed + 2);
    std::size_t failedCount = 0;
    for (int i = 0; i < urlCount; ++i) {
        const QString url = generator.next();
        const bool fail = failures() % 16 == 0;
        fixture.bridge.dispatchError =
            fail ? std::optional(ExtensionError{QStringLiteral("e"), QStringLiteral("failed")})
                 : std::nullopt;
        failedCount += fail;

        oauth->handleGetURL(url);

        const auto parsed = OAuthUtils::parse(url);
        nlohmann::ordered_json expected{{"code", nullptr}, {"codeChallenge", nullptr}};
        QByteArray expectedRecord = "[null]";
        if (parsed) {
            expected = {{"code", parsed->code}, {"codeChallenge", parsed->codeChallenge}};
            expectedRecord = "[" + *Json::encode(expected) + "]";
        }
        ASSERT_EQ(fixture.stored("message.oauthExchangeMessage"), expectedRecord)
            << qPrintable(url);
        ASSERT_EQ(fixture.bridge.dispatches.size(), 1u);
        ASSERT_EQ(fixture.bridge.dispatches[0].name, QStringLiteral("oauthExchange"));
        ASSERT_EQ(fixture.bridge.dispatches[0].userInfo, expected) << qPrintable(url);
        ASSERT_FALSE(oauth->shouldAutoOpenLoginTab);
        fixture.bridge.dispatches.clear();
        if (i % 1000 == 999)
            test::spin(1ms);
    }
    ASSERT_TRUE(test::waitUntil([&] { return fixture.alerts.alerts.size() == failedCount; }));
    test::spin(20ms);
    EXPECT_EQ(fixture.alerts.alerts.size(), failedCount);
    EXPECT_EQ(fixture.logTransport->count(), failedCount);
}

} // namespace

} // namespace lexmira
