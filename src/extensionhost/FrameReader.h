// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>

#include <cstddef>
#include <optional>

namespace lexmira {

// Cuts the bytes a browser writes to a native-messaging host into frames: a 32-bit length in
// native byte order, then that many bytes. Holds at most one unfinished frame: a length over the
// limit fails the reader as soon as its four bytes are in, before any of the frame arrives.
class FrameReader {
public:
    explicit FrameReader(std::size_t maxFrameSize);

    void append(const char* data, std::size_t size);
    // The next complete frame, oldest first; none when no complete frame is buffered or the
    // reader failed.
    std::optional<QByteArray> next();

    // A length over the limit was read; nothing more is taken.
    bool failed() const { return failed_; }
    // Bytes of a frame that has not completed are buffered (at the end of input: a frame cut
    // short).
    bool hasPartialFrame() const { return buffer_.size() > offset_; }

    // The frame the browser reads for json.
    static QByteArray encode(const QByteArray& json);

private:
    std::size_t maxFrameSize_;
    QByteArray buffer_;
    qsizetype offset_ = 0;
    bool failed_ = false;
};

} // namespace lexmira
