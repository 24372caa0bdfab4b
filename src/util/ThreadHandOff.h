// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QMetaObject>
#include <QObject>

#include <functional>
#include <memory>
#include <mutex>
#include <type_traits>
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

// A hand-over that Qt orders with its own futex-based locks, which a ThreadSanitizer build cannot
// see (QThread::wait() after the thread's last work, for one): release where the handing side is
// done, acquire where the receiving side knows it is, both with the same address. Nothing
// outside such a build.
inline void release([[maybe_unused]] const void* address)
{
#ifdef LEXMIRA_THREAD_SANITIZER
    __tsan_release(const_cast<void*>(address));
#endif
}

inline void acquire([[maybe_unused]] const void* address)
{
#ifdef LEXMIRA_THREAD_SANITIZER
    __tsan_acquire(const_cast<void*>(address));
#endif
}

// Queues work to run from the event loop of context's thread, as
// QMetaObject::invokeMethod(context, work, Qt::QueuedConnection) does; dropped when context is
// gone by then. Everything the calling thread did before the call happens before work runs:
// Qt's event queue guarantees it, and in a ThreadSanitizer build the guarantee is also announced
// to the sanitizer, which cannot see it inside an uninstrumented Qt. The one way this project
// hands work to another thread's event loop; context must be alive at the call, so from another
// thread than context's, go through bind.
template <class Work>
void queue(QObject* context, Work&& work)
{
#ifdef LEXMIRA_THREAD_SANITIZER
    // The token's address names this one hand-off: released here, acquired where it lands, both
    // when the work runs and when Qt discards it unrun (its thread ended first) and destroys it
    // there. What Qt writes while queueing (the call object holding work, inlined from its
    // templates) is left out of the sanitizer's view, as its reads on the other side already are.
    struct Landing {
        std::shared_ptr<char> token;
        std::decay_t<Work> work;
        Landing(std::shared_ptr<char> token, Work&& work)
            : token(std::move(token))
            , work(std::forward<Work>(work))
        {
        }
        Landing(Landing&&) = default;
        ~Landing()
        {
            // Runs before work's own destructor.
            if (token)
                __tsan_acquire(token.get());
        }
        void operator()()
        {
            __tsan_acquire(token.get());
            work();
        }
    };
    auto token = std::make_shared<char>();
    __tsan_release(token.get());
    __tsan_ignore_thread_begin();
    QMetaObject::invokeMethod(context, Landing(token, std::forward<Work>(work)),
                              Qt::QueuedConnection);
    __tsan_ignore_thread_end();
#else
    QMetaObject::invokeMethod(context, std::forward<Work>(work), Qt::QueuedConnection);
#endif
}

namespace detail {

// Where a bound completion may still be delivered: its context, until the context's destruction
// begins. The lock spans both the look and the queueing, so that a context destroyed on its own
// thread meanwhile either has not begun (and its destructor discards what was queued) or is
// seen as gone.
struct BoundContext {
    std::mutex mutex;
    QObject* context = nullptr;
    QMetaObject::Connection watch;
};

// Held by every copy of a bound completion; the last one to go stops watching the context.
class BoundTicket {
public:
    explicit BoundTicket(std::shared_ptr<BoundContext> target)
        : target(std::move(target))
    {
    }
    ~BoundTicket() { QObject::disconnect(target->watch); }
    BoundTicket(const BoundTicket&) = delete;
    BoundTicket& operator=(const BoundTicket&) = delete;

    const std::shared_ptr<BoundContext> target;
};

} // namespace detail

// Binds completion to context, as QObject::connect binds a slot to its context object: the
// function returned may be called from any thread, any number of times, and each call queues
// completion with its arguments to context's thread, never running it inside the call. A call
// made once context is destroyed, or queued before and still waiting then, is dropped. context
// must be alive when bind is called (from any thread), and not null; an empty completion binds
// to nothing.
template <class... Args>
std::function<void(Args...)> bind(QObject* context, std::function<void(Args...)> completion)
{
    Q_ASSERT(context);
    if (!completion || !context)
        return {};
    auto target = std::make_shared<detail::BoundContext>();
    target->context = context;
    // Runs on context's thread as its destruction begins, before it discards its queued events.
    target->watch = QObject::connect(context, &QObject::destroyed,
                                     [target = std::weak_ptr<detail::BoundContext>(target)] {
                                         if (const auto alive = target.lock()) {
                                             const std::lock_guard lock(alive->mutex);
                                             alive->context = nullptr;
                                         }
                                     });
    auto ticket = std::make_shared<detail::BoundTicket>(std::move(target));
    return [ticket, completion = std::move(completion)](Args... args) {
        const std::lock_guard lock(ticket->target->mutex);
        if (!ticket->target->context)
            return;
        queue(ticket->target->context, [completion, ... args = std::move(args)]() mutable {
            completion(std::move(args)...);
        });
    };
}

} // namespace ThreadHandOff

} // namespace lexmira
