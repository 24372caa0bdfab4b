// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

// bench-map-watch: starts a command and reports how long after its start its first top-level
// window was mapped on the X display, then leaves it running.
//
//     bench-map-watch [--timeout-ms N] -- COMMAND [ARGUMENT...]
//
// Prints one JSON line: {"pid":P,"startNs":S,"startToMapNs":T,"width":W,"height":H}, S being
// CLOCK_MONOTONIC at the fork, or
// {"pid":P,"error":"..."} with exit status 1 when the command exits or the timeout passes
// first. Meant for a display without a window manager (Xvfb), where a client's top-level
// windows are the root's children.

#include <X11/Xlib.h>

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>

namespace {

long long nowNs()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1'000'000'000LL + now.tv_nsec;
}

int fail(pid_t pid, const char* error)
{
    std::printf("{\"pid\":%d,\"error\":\"%s\"}\n", static_cast<int>(pid), error);
    return 1;
}

} // namespace

int main(int argc, char** argv)
{
    long long timeoutMs = 20'000;
    int first = 1;
    for (; first < argc; ++first) {
        const std::string argument = argv[first];
        if (argument == "--") {
            ++first;
            break;
        }
        if (argument == "--timeout-ms" && first + 1 < argc)
            timeoutMs = std::atoll(argv[++first]);
        else {
            std::fprintf(stderr, "usage: bench-map-watch [--timeout-ms N] -- COMMAND [ARGUMENT...]\n");
            return 2;
        }
    }
    if (first >= argc) {
        std::fprintf(stderr, "bench-map-watch: no command\n");
        return 2;
    }

    Display* display = XOpenDisplay(nullptr);
    if (!display) {
        std::fprintf(stderr, "bench-map-watch: cannot open the display\n");
        return 2;
    }
    const Window root = DefaultRootWindow(display);
    XSelectInput(display, root, SubstructureNotifyMask);
    XSync(display, False);

    const long long start = nowNs();
    const pid_t pid = fork();
    if (pid < 0)
        return fail(0, "fork failed");
    if (pid == 0) {
        close(ConnectionNumber(display));
        // The answer is this program's stdout alone: whoever reads it to its end must not
        // wait for the command.
        dup2(STDERR_FILENO, STDOUT_FILENO);
        execvp(argv[first], argv + first);
        _exit(127);
    }

    const long long deadline = start + timeoutMs * 1'000'000;
    for (;;) {
        while (XPending(display) > 0) {
            XEvent event;
            XNextEvent(display, &event);
            if (event.type != MapNotify || event.xmap.override_redirect)
                continue;
            const long long mapped = nowNs();
            XWindowAttributes attributes{};
            XGetWindowAttributes(display, event.xmap.window, &attributes);
            std::printf("{\"pid\":%d,\"startNs\":%lld,\"startToMapNs\":%lld,\"width\":%d,"
                        "\"height\":%d}\n",
                        static_cast<int>(pid), start, mapped - start, attributes.width,
                        attributes.height);
            return 0;
        }
        int status = 0;
        if (waitpid(pid, &status, WNOHANG) == pid)
            return fail(pid, "the command exited before mapping a window");
        const long long left = deadline - nowNs();
        if (left <= 0)
            return fail(pid, "no window was mapped in time");
        pollfd connection{ConnectionNumber(display), POLLIN, 0};
        // Short waits, so a command that exits without a window is noticed soon.
        poll(&connection, 1, static_cast<int>(std::min(left / 1'000'000 + 1, 50LL)));
    }
}
