// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "extensionhost/FrameReader.h"

#include <cstdint>
#include <cstring>

namespace lexmira {

namespace {

constexpr qsizetype headerSize = sizeof(std::uint32_t);

} // namespace

FrameReader::FrameReader(std::size_t maxFrameSize)
    : maxFrameSize_(maxFrameSize)
{
}

void FrameReader::append(const char* data, std::size_t size)
{
    if (failed_ || size == 0)
        return;
    // Frames already handed out are dropped before the buffer grows.
    if (offset_ > 0) {
        buffer_.remove(0, offset_);
        offset_ = 0;
    }
    buffer_.append(data, qsizetype(size));
    if (buffer_.size() >= headerSize) {
        std::uint32_t length = 0;
        std::memcpy(&length, buffer_.constData(), sizeof length);
        if (length > maxFrameSize_) {
            failed_ = true;
            buffer_.clear();
        }
    }
}

std::optional<QByteArray> FrameReader::next()
{
    if (failed_ || buffer_.size() - offset_ < headerSize)
        return std::nullopt;
    std::uint32_t length = 0;
    std::memcpy(&length, buffer_.constData() + offset_, sizeof length);
    if (length > maxFrameSize_) {
        failed_ = true;
        buffer_.clear();
        offset_ = 0;
        return std::nullopt;
    }
    if (buffer_.size() - offset_ - headerSize < qsizetype(length))
        return std::nullopt;
    QByteArray frame = buffer_.mid(offset_ + headerSize, qsizetype(length));
    offset_ += headerSize + qsizetype(length);
    if (offset_ == buffer_.size()) {
        buffer_.clear();
        offset_ = 0;
    }
    return frame;
}

QByteArray FrameReader::encode(const QByteArray& json)
{
    const auto length = static_cast<std::uint32_t>(json.size());
    QByteArray frame(headerSize, Qt::Uninitialized);
    std::memcpy(frame.data(), &length, sizeof length);
    frame.append(json);
    return frame;
}

} // namespace lexmira
