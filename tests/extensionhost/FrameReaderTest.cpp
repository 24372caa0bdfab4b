// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "extensionhost/FrameReader.h"
#include "extensionhost/HostProtocol.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

namespace lexmira {

namespace {

QByteArray lengthPrefix(std::uint32_t length)
{
    QByteArray bytes(4, Qt::Uninitialized);
    std::memcpy(bytes.data(), &length, 4);
    return bytes;
}

void append(FrameReader& reader, const QByteArray& bytes)
{
    reader.append(bytes.constData(), std::size_t(bytes.size()));
}

TEST(FrameReader, EncodesTheLengthInNativeByteOrderBeforeTheBytes)
{
    const QByteArray frame = FrameReader::encode(QByteArrayLiteral("{\"a\":1}"));
    EXPECT_EQ(frame, lengthPrefix(7) + QByteArrayLiteral("{\"a\":1}"));
}

TEST(FrameReader, ReadsAFrameThatArrivesOneByteAtATime)
{
    FrameReader reader(HostProtocol::maxFrameSize);
    const QByteArray bytes = FrameReader::encode(QByteArrayLiteral("{\"type\":\"hello\"}"));
    for (qsizetype i = 0; i + 1 < bytes.size(); ++i) {
        reader.append(bytes.constData() + i, 1);
        EXPECT_FALSE(reader.next());
        EXPECT_TRUE(reader.hasPartialFrame());
    }
    reader.append(bytes.constData() + bytes.size() - 1, 1);
    EXPECT_EQ(reader.next(), QByteArrayLiteral("{\"type\":\"hello\"}"));
    EXPECT_FALSE(reader.hasPartialFrame());
    EXPECT_FALSE(reader.next());
}

TEST(FrameReader, ReadsSeveralFramesOfOneChunkInOrder)
{
    FrameReader reader(HostProtocol::maxFrameSize);
    append(reader, FrameReader::encode("1") + FrameReader::encode("") + FrameReader::encode("22") +
                       lengthPrefix(3) + "3");
    EXPECT_EQ(reader.next(), QByteArrayLiteral("1"));
    EXPECT_EQ(reader.next(), QByteArray());
    EXPECT_EQ(reader.next(), QByteArrayLiteral("22"));
    EXPECT_FALSE(reader.next());
    EXPECT_TRUE(reader.hasPartialFrame());
    append(reader, "33");
    EXPECT_EQ(reader.next(), QByteArrayLiteral("333"));
}

TEST(FrameReader, TakesAFrameOfExactlyTheLimit)
{
    FrameReader reader(HostProtocol::maxFrameSize);
    const QByteArray body(qsizetype(HostProtocol::maxFrameSize), 'x');
    append(reader, FrameReader::encode(body));
    EXPECT_FALSE(reader.failed());
    const auto frame = reader.next();
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->size(), qsizetype(HostProtocol::maxFrameSize));
}

TEST(FrameReader, FailsOnALengthOneOverTheLimitBeforeTheFrameArrives)
{
    FrameReader reader(HostProtocol::maxFrameSize);
    append(reader, lengthPrefix(std::uint32_t(HostProtocol::maxFrameSize + 1)));
    EXPECT_TRUE(reader.failed());
    EXPECT_FALSE(reader.next());
    append(reader, FrameReader::encode("{}"));
    EXPECT_FALSE(reader.next()) << "nothing is read after a failure";
}

TEST(FrameReader, FailsOnAnOversizedFrameBehindGoodOnes)
{
    FrameReader reader(HostProtocol::maxFrameSize);
    append(reader, FrameReader::encode("{}") + lengthPrefix(0xFFFFFFFFu));
    EXPECT_EQ(reader.next(), QByteArrayLiteral("{}"));
    EXPECT_FALSE(reader.next());
    EXPECT_TRUE(reader.failed());
}

TEST(FrameReader, ALengthPrefixWithNothingBehindItIsAPartialFrame)
{
    FrameReader reader(HostProtocol::maxFrameSize);
    append(reader, lengthPrefix(10));
    EXPECT_FALSE(reader.next());
    EXPECT_TRUE(reader.hasPartialFrame());
    EXPECT_FALSE(reader.failed());
}

} // namespace

} // namespace lexmira
