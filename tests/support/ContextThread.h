// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "util/ThreadHandOff.h"

#include <QObject>
#include <QThread>

#include <functional>
#include <future>

namespace lexmira {

namespace test {

// A thread with an event loop and a context on it, destroyed on that thread on request.
class ContextThread {
public:
    ContextThread()
    {
        context_ = new QObject;
        context_->moveToThread(&thread_);
        home_->moveToThread(&thread_);
        QObject::connect(&thread_, &QThread::finished, home_, &QObject::deleteLater);
        thread_.start();
    }
    ~ContextThread()
    {
        destroyContext();
        thread_.quit();
        thread_.wait();
    }

    QObject* context() const { return context_; }
    QThread* thread() { return &thread_; }

    // Runs work on the worker thread and returns once it has run. The way back is a promise, which
    // the sanitizer sees, rather than a blocking queued call inside Qt, which it does not.
    void runThere(const std::function<void()>& work)
    {
        std::promise<void> done;
        ThreadHandOff::queue(home_, [&] {
            work();
            done.set_value();
        });
        done.get_future().wait();
    }
    // Destroys the context on its thread, right after before has run there.
    void destroyContext(const std::function<void()>& before = {})
    {
        if (!context_)
            return;
        runThere([this, &before] {
            if (before)
                before();
            delete context_;
        });
        context_ = nullptr;
    }

private:
    QThread thread_;
    QObject* context_ = nullptr;
    QObject* home_ = new QObject;
};

} // namespace test

} // namespace lexmira
