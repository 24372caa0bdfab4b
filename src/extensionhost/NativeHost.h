// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "extensionhost/FrameReader.h"

#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>

namespace lexmira {

class HostSession;

// The pipes a browser gives its native-messaging host: frames read from input go to the session,
// the session's frames are written to output. Input that ends, ends cut short, or announces a
// frame over the limit finishes the session; so does a browser that stops reading while more
// than the limit waits to be written. Main thread only.
class NativeHost final : public QObject {
    Q_OBJECT

public:
    // Takes over the two descriptors (made non-blocking); session must outlive this object.
    NativeHost(int input, int output, HostSession& session, QObject* parent = nullptr);

    // Writes what is still buffered, waiting up to timeoutMs for the browser to read it.
    void flush(int timeoutMs);

private:
    void readInput();
    void write(const QByteArray& json);
    void writeOutput();

    int input_;
    int output_;
    HostSession& session_;
    FrameReader reader_;
    QSocketNotifier inputNotifier_;
    QSocketNotifier outputNotifier_;
    QByteArray unwritten_;
};

} // namespace lexmira
