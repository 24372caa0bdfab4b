// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "support/ChildProcess.h"

#include <nlohmann/json.hpp>

#include <QByteArray>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace lexmira {

namespace test {

// Plays a browser that started lexmira-extension-host for its extension: the host runs as a
// child process with the arguments that browser family passes, the test writes frames (a 32-bit
// length in native byte order, then the JSON bytes) to its standard input and reads the frames
// it writes back. The host's standard error goes to the test's. Lives on the thread that made it,
// which must run its event loop while waiting (test::waitUntil, or the waits below); the host is
// ended, if still running, by the destructor (as test::ChildProcess ends its process).
class BrowserPlayer {
public:
    using Json = nlohmann::ordered_json;

    // How the browser names the extension on the host's command line.
    enum class Form {
        chromium, // chrome-extension://<id>/
        firefox,  // <manifest path> <id>
    };

    // One frame the host wrote: its exact bytes, and their JSON (discarded when not JSON).
    struct Frame {
        QByteArray bytes;
        Json json;
    };

    static constexpr std::chrono::milliseconds defaultTimeout{10'000};

    // Starts the host of the built tree for extensionId; environment is the host's (its session
    // bus, where it finds the shared suite and the keychain).
    BrowserPlayer(Form form, const QString& extensionId, const QProcessEnvironment& environment);
    ~BrowserPlayer() = default;
    BrowserPlayer(const BrowserPlayer&) = delete;
    BrowserPlayer& operator=(const BrowserPlayer&) = delete;

    // The command-line arguments a browser of form passes for extensionId.
    static QStringList arguments(Form form, const QString& extensionId);
    // The bytes of one frame around json, as a browser writes it.
    static QByteArray encode(const QByteArray& json);

    // Writes json (compact, as nlohmann dumps it) as one frame.
    void send(const Json& json);
    // Writes these bytes as one frame, unchanged.
    void sendFrame(const QByteArray& json);
    // Writes these bytes as they are: no length in front.
    void writeRaw(const QByteArray& bytes);
    // Closes the host's standard input, as a browser does when the extension goes away.
    void closeInput();
    // SIGKILL.
    void kill();

    // Sends {"type":"hello","version":1} and waits for the welcome; the welcome, or none.
    std::optional<Json> hello(std::chrono::milliseconds timeout = defaultTimeout);
    // Sends request with the next id (as "id", right after its "type") and waits for the frame
    // that carries that id; that frame, or none.
    std::optional<Json> request(Json request, std::chrono::milliseconds timeout = defaultTimeout);
    // The id the next request() gets.
    std::int64_t nextId() const { return nextId_; }

    // Every frame received so far, oldest first.
    const std::vector<Frame>& frames();
    // Waits for the oldest frame not taken yet that matches, and takes it.
    std::optional<Frame> takeFrame(const std::function<bool(const Json&)>& matches,
                                   std::chrono::milliseconds timeout = defaultTimeout);
    // Every byte the host has written.
    const QByteArray& output();

    bool running() const;
    // Waits for the host to exit.
    bool waitForExit(std::chrono::milliseconds timeout = defaultTimeout);
    // Whether the host exited by itself (not killed by a signal).
    bool exitedNormally() const;
    int exitCode() const;
    qint64 processId() const;

private:
    void readOutput();

    ChildProcess process_;
    QByteArray output_;
    qsizetype parsed_ = 0;
    std::vector<Frame> frames_;
    std::vector<bool> taken_;
    std::int64_t nextId_ = 1;
};

} // namespace test

} // namespace lexmira
