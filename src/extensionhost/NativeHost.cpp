// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "extensionhost/NativeHost.h"

#include "extensionhost/HostProtocol.h"
#include "extensionhost/HostSession.h"

#include <cerrno>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace lexmira {

namespace {

void makeNonBlocking(int fd)
{
    const int flags = ::fcntl(fd, F_GETFL);
    if (flags >= 0)
        ::fcntl(fd, F_SETFL, flags | O_NONBLOCK);
}

} // namespace

NativeHost::NativeHost(int input, int output, HostSession& session, QObject* parent)
    : QObject(parent)
    , input_(input)
    , output_(output)
    , session_(session)
    , reader_(HostProtocol::maxFrameSize)
    , inputNotifier_(input, QSocketNotifier::Read)
    , outputNotifier_(output, QSocketNotifier::Write)
{
    makeNonBlocking(input_);
    makeNonBlocking(output_);
    outputNotifier_.setEnabled(false);
    connect(&inputNotifier_, &QSocketNotifier::activated, this, &NativeHost::readInput);
    connect(&outputNotifier_, &QSocketNotifier::activated, this, &NativeHost::writeOutput);
    connect(&session_, &HostSession::frameReady, this, &NativeHost::write);
    connect(&session_, &HostSession::finished, this, [this] { inputNotifier_.setEnabled(false); });
}

void NativeHost::readInput()
{
    char buffer[65536];
    for (;;) {
        const ssize_t count = ::read(input_, buffer, sizeof buffer);
        if (count < 0) {
            if (errno == EINTR)
                continue;
            if (errno == EAGAIN || errno == EWOULDBLOCK)
                return;
            session_.finish(QStringLiteral("the browser's pipe failed"));
            return;
        }
        if (count == 0) {
            session_.finish(reader_.hasPartialFrame() ? QStringLiteral("a frame was cut short")
                                                      : QStringLiteral("the browser closed the "
                                                                       "connection"));
            return;
        }
        reader_.append(buffer, std::size_t(count));
        while (const auto frame = reader_.next()) {
            session_.receive(*frame);
            if (session_.isFinished())
                return;
        }
        if (reader_.failed()) {
            session_.finish(QStringLiteral("a frame is longer than 1 MiB"));
            return;
        }
    }
}

void NativeHost::write(const QByteArray& json)
{
    if (std::size_t(unwritten_.size()) + std::size_t(json.size()) > HostProtocol::maxUnreadOutput) {
        session_.finish(QStringLiteral("the browser does not read what the host writes"));
        return;
    }
    unwritten_.append(FrameReader::encode(json));
    writeOutput();
}

void NativeHost::writeOutput()
{
    while (!unwritten_.isEmpty()) {
        const ssize_t written =
            ::write(output_, unwritten_.constData(), std::size_t(unwritten_.size()));
        if (written < 0) {
            if (errno == EINTR)
                continue;
            if (errno == EAGAIN || errno == EWOULDBLOCK) {
                outputNotifier_.setEnabled(true);
                return;
            }
            // The browser is gone; there is no one left to write to.
            unwritten_.clear();
            session_.finish(QStringLiteral("the browser's pipe is closed"));
            break;
        }
        unwritten_.remove(0, written);
    }
    outputNotifier_.setEnabled(false);
}

void NativeHost::flush(int timeoutMs)
{
    while (!unwritten_.isEmpty()) {
        pollfd descriptor{output_, POLLOUT, 0};
        if (::poll(&descriptor, 1, timeoutMs) <= 0)
            return;
        const ssize_t written =
            ::write(output_, unwritten_.constData(), std::size_t(unwritten_.size()));
        if (written < 0 && errno != EINTR && errno != EAGAIN)
            return;
        if (written > 0)
            unwritten_.remove(0, written);
    }
}

} // namespace lexmira
