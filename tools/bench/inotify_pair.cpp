// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

// bench-inotify-pair: a value written in one process and noticed in another with nothing but
// inotify, using the same atomic write as the shared suite (a new file beside the value,
// written, synced, renamed over it, and the folder synced). The baseline of the shared suite's
// cross-process change notification.
//
//     bench-inotify-pair watch DIR NAME   prints "ready", then "<ns>" for every change of NAME
//     bench-inotify-pair write DIR NAME   for every line on stdin, prints "<ns>" and writes
//                                         that line as NAME's value
//
// <ns> is CLOCK_MONOTONIC in nanoseconds, comparable between the two processes.

#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <ctime>
#include <iostream>
#include <string>

namespace {

long long nowNs()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1'000'000'000LL + now.tv_nsec;
}

bool writeValue(const std::string& directory, const std::string& name, const std::string& value)
{
    const std::string temporary = directory + "/." + name + "." + std::to_string(getpid());
    const int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (fd < 0)
        return false;
    const bool written = ::write(fd, value.data(), value.size()) == ssize_t(value.size()) &&
                         ::fsync(fd) == 0;
    ::close(fd);
    if (!written || ::rename(temporary.c_str(), (directory + "/" + name).c_str()) != 0)
        return false;
    const int folder = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder >= 0) {
        ::fsync(folder);
        ::close(folder);
    }
    return true;
}

int watch(const std::string& directory, const std::string& name)
{
    const int fd = inotify_init1(IN_CLOEXEC);
    if (fd < 0 || inotify_add_watch(fd, directory.c_str(),
                                    IN_CLOSE_WRITE | IN_MOVED_TO | IN_DELETE | IN_MOVED_FROM) < 0)
        return 1;
    std::printf("ready\n");
    std::fflush(stdout);
    alignas(inotify_event) char buffer[64 * 1024];
    for (;;) {
        const ssize_t length = ::read(fd, buffer, sizeof buffer);
        if (length <= 0)
            return 1;
        for (ssize_t offset = 0; offset < length;) {
            const auto* event = reinterpret_cast<const inotify_event*>(buffer + offset);
            if (event->len > 0 && name == event->name) {
                std::printf("%lld\n", nowNs());
                std::fflush(stdout);
            }
            offset += ssize_t(sizeof(inotify_event) + event->len);
        }
    }
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 4 || (std::strcmp(argv[1], "watch") != 0 && std::strcmp(argv[1], "write") != 0)) {
        std::fprintf(stderr, "usage: bench-inotify-pair watch|write DIR NAME\n");
        return 2;
    }
    if (std::strcmp(argv[1], "watch") == 0)
        return watch(argv[2], argv[3]);
    for (std::string line; std::getline(std::cin, line);) {
        std::printf("%lld\n", nowNs());
        std::fflush(stdout);
        if (!writeValue(argv[2], argv[3], line))
            return 1;
    }
    return 0;
}
