// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QMetaObject>
#include <QObject>

#include <memory>
#include <utility>

#if defined(__SANITIZE_THREAD__)
#define LEXMIRA_THREAD_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define LEXMIRA_THREAD_SANITIZER 1
#endif
#endif

#ifdef LEXMIRA_THREAD_SANITIZER
#include <sanitizer/tsan_interface.h>
// Part of the runtime's interface, not of every version's header.
extern "C" void __tsan_ignore_thread_begin();
extern "C" void __tsan_ignore_thread_end();
#endif

namespace lexmira {

namespace ThreadHandOff {

// Queues work to run from the event loop of context's thread, as
// QMetaObject::invokeMethod(context, work, Qt::QueuedConnection) does; dropped when context is
// gone by then. Everything the calling thread did before the call happens before work runs:
// Qt's event queue guarantees it, and in a ThreadSanitizer build the guarantee is also announced
// to the sanitizer, which cannot see it inside an uninstrumented Qt. The one way this project
// hands work to another thread's event loop.
template <class Work>
void queue(QObject* context, Work&& work)
{
#ifdef LEXMIRA_THREAD_SANITIZER
    // The token's address names this one hand-off: released here, acquired where it lands. What
    // Qt writes while queueing (the call object holding work, inlined from its templates) is
    // left out of the sanitizer's view, as its reads on the other side already are.
    auto token = std::make_shared<char>();
    __tsan_release(token.get());
    __tsan_ignore_thread_begin();
    QMetaObject::invokeMethod(
        context,
        [token, work = std::forward<Work>(work)]() mutable {
            __tsan_acquire(token.get());
            work();
        },
        Qt::QueuedConnection);
    __tsan_ignore_thread_end();
#else
    QMetaObject::invokeMethod(context, std::forward<Work>(work), Qt::QueuedConnection);
#endif
}

} // namespace ThreadHandOff

} // namespace lexmira
