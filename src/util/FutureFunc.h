// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "util/ThreadHandOff.h"

#include <QCoreApplication>

#include <functional>
#include <utility>

namespace lexmira {

// Helpers for callback-style asynchronous functions.
namespace FutureFunc {

// Runs work on the main thread, asynchronously, after the current event has been handled.
inline void onMain(std::function<void()> work)
{
    ThreadHandOff::queue(QCoreApplication::instance(), std::move(work));
}

// Wraps a completion so that, from whichever thread it is called, it runs on the main thread.
template <class... Args>
std::function<void(Args...)> deliverOnMain(std::function<void(Args...)> completion)
{
    return [completion = std::move(completion)](Args... args) {
        onMain(
            [completion, ... args = std::move(args)]() mutable { completion(std::move(args)...); });
    };
}

} // namespace FutureFunc

} // namespace lexmira
