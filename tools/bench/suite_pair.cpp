// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

// bench-suite-pair: a value written to the shared suite in one process and noticed by the
// suite's observer in another — what the companion and the extension do.
//
//     bench-suite-pair watch KEY   prints "ready", then "<ns>" for every change of KEY
//     bench-suite-pair write KEY   for every line on stdin, prints "<ns>" and stores that line
//                                  as KEY's value
//
// <ns> is CLOCK_MONOTONIC in nanoseconds, comparable between the two processes.

#include "Common/EnvCommon.h"
#include "platform/SharedSuite.h"

#include <QString>

#include <cstdio>
#include <cstring>
#include <ctime>
#include <iostream>
#include <string>
#include <thread>

namespace lexmira {

namespace {

long long nowNs()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1'000'000'000LL + now.tv_nsec;
}

class PrintingObserver : public SharedSuiteObserver {
public:
    void observeValue(const QString&) override
    {
        std::printf("%lld\n", nowNs());
        std::fflush(stdout);
    }
};

} // namespace

} // namespace lexmira

using namespace lexmira;

int main(int argc, char** argv)
{
    if (argc != 3 || (std::strcmp(argv[1], "watch") != 0 && std::strcmp(argv[1], "write") != 0)) {
        std::fprintf(stderr, "usage: bench-suite-pair watch|write KEY\n");
        return 2;
    }
    const auto suite = SharedSuite::open(QString::fromUtf8(appGroupSuiteName.data(),
                                                           qsizetype(appGroupSuiteName.size())));
    if (!suite) {
        std::fprintf(stderr, "bench-suite-pair: the shared suite cannot be opened\n");
        return 1;
    }
    const QString key = QString::fromUtf8(argv[2]);
    if (std::strcmp(argv[1], "watch") == 0) {
        suite->addObserver(std::make_shared<PrintingObserver>(), key);
        std::printf("ready\n");
        std::fflush(stdout);
        // The observer runs on the suite's own thread; this one only has to stay alive until
        // stdin closes.
        for (std::string line; std::getline(std::cin, line);) {
        }
        return 0;
    }
    for (std::string line; std::getline(std::cin, line);) {
        std::printf("%lld\n", nowNs());
        std::fflush(stdout);
        suite->setData(QByteArray::fromStdString(line), key);
    }
    return 0;
}
