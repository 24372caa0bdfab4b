// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/HttpClient.h"
#include "platform/SystemLog.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QString>
#include <QStringDecoder>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace lexmira {

// A broken property is a crash, so that libFuzzer keeps the input that shows it.
#define FUZZ_CHECK(condition)                                                                      \
    do {                                                                                           \
        if (!(condition)) {                                                                        \
            std::fprintf(stderr, "%s:%d: property does not hold: %s\n", __FILE__, __LINE__,       \
                         #condition);                                                              \
            std::abort();                                                                          \
        }                                                                                          \
    } while (false)

namespace fuzz {

// The application object the code under test expects (event loop, queued calls), made once per
// process. Qt's own warnings are dropped: hostile input makes plenty, and they slow the run.
inline void startApplication()
{
    static int argc = 1;
    static char name[] = "lexmira-fuzz";
    static char* argv[] = {name, nullptr};
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& message) {
        if (type == QtFatalMsg) {
            std::fprintf(stderr, "%s\n", qPrintable(message));
            std::abort();
        }
    });
    // Qt's own event dispatcher rather than GLib's: every input settles the loop several times,
    // and each GLib main-context iteration adds locks and a poll that none of the targets needs.
    qputenv("QT_NO_GLIB", "1");
    static QCoreApplication* application = new QCoreApplication(argc, argv);
    Q_UNUSED(application);
}

// Runs what the input queued on the event loop, and what that queued in turn.
inline void settle()
{
    for (int round = 0; round < 4; ++round)
        QCoreApplication::processEvents();
}

inline bool isUtf8(const std::string& text)
{
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString decoded = utf8(QByteArray::fromStdString(text));
    return !utf8.hasError();
}

// Keeps the requests of the current input and never answers them.
class CapturingHttpClient final : public HttpClient {
public:
    void send(HttpRequest request, Completion) override
    {
        const std::lock_guard lock(mutex_);
        requests_.push_back(std::move(request));
    }

    std::vector<HttpRequest> take()
    {
        const std::lock_guard lock(mutex_);
        return std::exchange(requests_, {});
    }

private:
    std::mutex mutex_;
    std::vector<HttpRequest> requests_;
};

class DroppingSystemLog final : public SystemLog {
public:
    void error(const std::string&) override {}
};

} // namespace fuzz

} // namespace lexmira
