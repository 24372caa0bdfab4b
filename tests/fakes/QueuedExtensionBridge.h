#pragma once

#include "platform/ExtensionBridge.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <QObject>
#include <QString>
#include <QThread>

#include <functional>
#include <optional>
#include <vector>

// Records every call and answers it the way the real bridge does: later, never from inside the
// call — from the main event loop, or from a worker thread of its own when answersFromWorker is
// set (to check that callers do not rely on the thread). Every dispatch is answered with
// dispatchError. The calls themselves are main thread only.
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
                         const std::optional<nlohmann::ordered_json>& userInfo,
                         Completion completion) override
    {
        dispatches.push_back({name, extensionIdentifier, userInfo});
        if (onDispatch)
            onDispatch(dispatches.back());
        answer([completion = std::move(completion), error = dispatchError] { completion(error); });
    }

    void getState(const QString& extensionIdentifier, StateCompletion completion) override
    {
        stateQueries.push_back(extensionIdentifier);
        answer([completion = std::move(completion), enabled = enabled] {
            completion(enabled, std::nullopt);
        });
    }

    void showPreferences(const QString& extensionIdentifier, Completion completion) override
    {
        preferencesShown.push_back(extensionIdentifier);
        answer([completion = std::move(completion)] { completion(std::nullopt); });
    }

    // The answer to every dispatch from now on.
    std::optional<ExtensionError> dispatchError;
    std::optional<bool> enabled = true;
    bool answersFromWorker = false;
    // Called inside dispatchMessage, with the call just recorded.
    std::function<void(const Dispatch&)> onDispatch;

    std::vector<Dispatch> dispatches;
    std::vector<QString> stateQueries;
    std::vector<QString> preferencesShown;

    // The thread answers come from when answersFromWorker is set.
    QThread* workerThread() { return &worker_; }

private:
    void answer(std::function<void()> call)
    {
        QObject* context = answersFromWorker ? &workerContext_ : QCoreApplication::instance();
        QMetaObject::invokeMethod(context, std::move(call), Qt::QueuedConnection);
    }

    QThread worker_;
    QObject workerContext_;
};
