// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "extensionhost/AsyncKeychain.h"

#include "Common/EnvCommon.h"
#include "util/ThreadHandOff.h"

#include <QPointer>

namespace lexmira {

AsyncKeychain::AsyncKeychain(std::shared_ptr<KeychainItems> items)
    : keychain_(std::string(keychainService), std::string(keychainAccessGroup), std::move(items))
    , worker_(new QObject)
{
    thread_.setObjectName(QStringLiteral("keychain"));
    worker_->moveToThread(&thread_);
    QObject::connect(&thread_, &QThread::finished, worker_, &QObject::deleteLater);
    // Emitted on the thread as it ends, after its last call.
    QObject::connect(
        &thread_, &QThread::finished, worker_, [this] { ThreadHandOff::release(&thread_); },
        Qt::DirectConnection);
    thread_.start();
}

AsyncKeychain::~AsyncKeychain()
{
    thread_.quit();
    thread_.wait();
    ThreadHandOff::acquire(&thread_);
}

void AsyncKeychain::run(QObject* context, Completion completion, std::function<Result()> call)
{
    ThreadHandOff::queue(worker_, [this, context = QPointer<QObject>(context),
                                   completion = std::move(completion),
                                   call = std::move(call)]() mutable {
        // Back through the receiver, which outlives this thread; the context is only looked at on
        // its own thread.
        ThreadHandOff::queue(&receiver_,
                             [context, completion = std::move(completion), result = call()] {
                                 if (context)
                                     completion(result);
                             });
    });
}

void AsyncKeychain::get(const std::string& account, bool asPersistentReference, QObject* context,
                        Completion completion)
{
    run(context, std::move(completion), [this, account, asPersistentReference] {
        QByteArray data;
        const auto status = keychain_.getStatus(account, asPersistentReference, data);
        return Result{status, status == KeychainItems::success ? std::optional<QByteArray>(data)
                                                               : std::nullopt};
    });
}

void AsyncKeychain::set(const std::string& account, const std::optional<QByteArray>& data,
                        QObject* context, Completion completion)
{
    run(context, std::move(completion), [this, account, data] {
        return Result{keychain_.setStatus(account, data), {}};
    });
}

void AsyncKeychain::remove(const std::string& account, QObject* context, Completion completion)
{
    run(context, std::move(completion), [this, account] {
        return Result{keychain_.deleteStatus(account), {}};
    });
}

} // namespace lexmira
