// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

// Linked into every executable of a ThreadSanitizer build, and nowhere else.
//
// Qt starts a process with clone(CLONE_VM | CLONE_VFORK): until it execs, the child runs in its
// parent's memory, on the parent's thread state, and calls the sanitizer's interceptors on the way
// (close, dup2, sigprocmask). The state it leaves changed is the parent's: from then on the
// sanitizer no longer sees that thread's lock operations, and reports races on data its locks do
// protect. The sanitizer does know fork(), and makes both sides safe across it; so here a clone
// that would share its parent's memory becomes a fork whose child runs the same function and
// ends as it would have.

#include <dlfcn.h>
#include <sched.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdarg>

extern "C" int clone(int (*function)(void*), void* stack, int flags, void* argument, ...)
{
    va_list rest;
    va_start(rest, argument);
    auto* parentTid = va_arg(rest, pid_t*);
    void* tls = va_arg(rest, void*);
    auto* childTid = va_arg(rest, pid_t*);
    va_end(rest);

    using Clone = int (*)(int (*)(void*), void*, int, void*, ...);
    static const auto next = reinterpret_cast<Clone>(dlsym(RTLD_NEXT, "clone"));
    constexpr int sharesMemoryUntilExec = CLONE_VM | CLONE_VFORK;
    if ((flags & sharesMemoryUntilExec) != sharesMemoryUntilExec || (flags & CLONE_THREAD) != 0)
        return next(function, stack, flags, argument, parentTid, tls, childTid);

    const pid_t pid = fork();
    if (pid == 0)
        _exit(function(argument));
    if (pid < 0)
        return -1;
    if ((flags & CLONE_PIDFD) != 0) {
        const auto pidfd = static_cast<int>(syscall(SYS_pidfd_open, pid, 0));
        if (pidfd < 0) {
            const int error = errno;
            kill(pid, SIGKILL);
            waitpid(pid, nullptr, 0);
            errno = error;
            return -1;
        }
        // With CLONE_PIDFD, the descriptor comes back where the parent's thread id would.
        *reinterpret_cast<int*>(parentTid) = pidfd;
    }
    return pid;
}
