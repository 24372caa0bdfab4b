// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/ExtensionBridge.h"
#include "util/ThreadHandOff.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <QObject>
#include <QString>
#include <QThread>

#include <deque>
#include <functional>
#include <optional>
#include <vector>

namespace lexmira {

// Records every call and answers it the way the real bridge does: later, never from inside the
// call. The answer arrives on the main event loop, or on a worker thread of the fake's own when
// answersFromWorker is set (to check that callers do not rely on the thread); from there it goes
// to the call's context, on the context's thread and not at all once the context is gone, or,
// for a call without a context, runs where it arrived. Each kind of call first takes the oldest
// error scripted for it; after that, dispatches answer dispatchError and the rest succeed. The
// calls themselves are main thread only.
class QueuedExtensionBridge final : public ExtensionBridge {
public:
    struct Dispatch {
        QString name;
        QString extensionIdentifier;
        std::optional<nlohmann::ordered_json> userInfo;
    };

    QueuedExtensionBridge()
    {
        workerContext_.moveToThread(&worker_);
        worker_.start();
    }
    ~QueuedExtensionBridge() override
    {
        worker_.quit();
        worker_.wait();
    }

    void dispatchMessage(const QString& name, const QString& extensionIdentifier,
                         const std::optional<nlohmann::ordered_json>& userInfo, QObject* context,
                         Completion completion) override
    {
        dispatches.push_back({name, extensionIdentifier, userInfo});
        if (onDispatch)
            onDispatch(dispatches.back());
        auto error = next(dispatchErrors);
        answer(context, [completion = std::move(completion),
                         error = error ? error : dispatchError] { completion(error); });
    }

    void getState(const QString& extensionIdentifier, QObject* context,
                  StateCompletion completion) override
    {
        stateQueries.push_back(extensionIdentifier);
        answer(context, [completion = std::move(completion), error = next(stateErrors),
                         enabled = enabled] { completion(error ? std::nullopt : enabled, error); });
    }

    void showPreferences(const QString& extensionIdentifier, QObject* context,
                         Completion completion) override
    {
        preferencesShown.push_back(extensionIdentifier);
        if (holdPreferences) {
            heldPreferences.push_back(context ? ThreadHandOff::bind(context, std::move(completion))
                                              : std::move(completion));
            return;
        }
        answer(context, [completion = std::move(completion), error = next(preferencesErrors)] {
            completion(error);
        });
    }

    void getBrowserName(const QString& extensionIdentifier, QObject* context,
                        BrowserNameCompletion completion) override
    {
        browserNameQueries.push_back(extensionIdentifier);
        answer(context,
               [completion = std::move(completion), name = browserName] { completion(name); });
    }

    // The answer to every dispatch once dispatchErrors is used up.
    std::optional<ExtensionError> dispatchError;
    // Errors for the next calls of each kind, oldest first.
    std::deque<ExtensionError> dispatchErrors;
    std::deque<ExtensionError> stateErrors;
    std::deque<ExtensionError> preferencesErrors;
    // What GetState answers when it does not fail: none is "no state".
    std::optional<bool> enabled = true;
    // What getBrowserName answers: empty is no name reported.
    QString browserName;
    // When set, showPreferences keeps its completion in heldPreferences instead of answering;
    // calling a held completion delivers it as an answer would be.
    bool holdPreferences = false;
    std::vector<Completion> heldPreferences;
    bool answersFromWorker = false;
    // Called inside dispatchMessage, with the call just recorded.
    std::function<void(const Dispatch&)> onDispatch;

    std::vector<Dispatch> dispatches;
    std::vector<QString> stateQueries;
    std::vector<QString> preferencesShown;
    std::vector<QString> browserNameQueries;

    // The thread answers arrive on when answersFromWorker is set.
    QThread* workerThread() { return &worker_; }

private:
    static std::optional<ExtensionError> next(std::deque<ExtensionError>& queue)
    {
        if (queue.empty())
            return std::nullopt;
        auto error = queue.front();
        queue.pop_front();
        return error;
    }

    void answer(QObject* context, std::function<void()> call)
    {
        if (context)
            call = ThreadHandOff::bind(context, std::move(call));
        ThreadHandOff::queue(answersFromWorker ? &workerContext_ : QCoreApplication::instance(),
                             std::move(call));
    }

    QThread worker_;
    QObject workerContext_;
};

} // namespace lexmira
