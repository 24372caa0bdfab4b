// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/BrokerLink.h"

#include <nlohmann/json.hpp>

#include <QByteArray>
#include <QObject>
#include <QString>

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>

class QTimer;

namespace lexmira {

class AsyncKeychain;
class SharedSuite;
class SharedSuiteObserver;

// One browser connection's conversation with the extension: the frames the extension sends come
// in through receive, the frames for it leave through frameReady. It greets the extension and
// counts it with the broker, relays the companion's messages and their replies, and serves the
// shared suite and keychain. Input it cannot serve is answered with an error frame when the
// request carries an id, and otherwise ends the connection (finished). Main thread only.
class HostSession final : public QObject {
    Q_OBJECT

public:
    struct Services {
        // The shared suite; null when it could not be opened (its requests then fail).
        std::shared_ptr<SharedSuite> suite;
        // Both must outlive the session.
        AsyncKeychain* keychain = nullptr;
        BrokerLink* broker = nullptr;
    };

    HostSession(BrokerLink::Peer peer, Services services, QObject* parent = nullptr);
    ~HostSession() override;

    // Handles one frame's bytes. Ignored once the session has finished.
    void receive(const QByteArray& frame);
    // Ends the conversation from this side: pending messages fail, the broker forgets it.
    void finish(const QString& reason);

    bool isFinished() const { return finished_; }
    bool hasSaidHello() const { return helloReceived_; }
    std::size_t dispatchesInFlight() const { return dispatches_.size(); }
    std::size_t keychainRequestsInFlight() const { return keychainRequests_; }
    std::size_t observedKeys() const { return observers_.size(); }

Q_SIGNALS:
    // One frame's JSON for the extension, never over the frame limit.
    void frameReady(const QByteArray& json);
    // The connection is over; nothing more is sent.
    void finished(const QString& reason);

private:
    using Json = nlohmann::ordered_json;
    using Id = std::int64_t;

    void handle(const Json& request, std::optional<Id> id);
    void hello(const Json& request);
    void reply(const Json& request, Id id);
    void suiteGet(const Json& request, Id id);
    void suiteSet(const Json& request, Id id);
    void suiteObserve(const Json& request, Id id);
    void keychainRequest(const std::string& type, const Json& request, Id id);
    void dispatch(const QString& name, const QString& userInfo, BrokerLink::Reply reply);
    void answerDispatch(Id id, std::optional<QString> error);
    void keyChanged(const QString& key);

    void send(const Json& frame);
    void sendError(std::optional<Id> id, const std::string& message);

    // Reads the request's "data": base64 bytes, or null for none. Answers the error (missing when
    // it is absent or of another type) and returns false when it is neither.
    bool dataField(const Json& request, Id id, const std::string& missing,
                   std::optional<QByteArray>& bytes);
    // A string field of the request within maxBytes, or none.
    static std::optional<std::string> stringField(const Json& request, const char* name,
                                                  std::size_t maxBytes);

    BrokerLink::Peer peer_;
    Services services_;
    bool helloReceived_ = false;
    bool finished_ = false;

    struct PendingDispatch {
        BrokerLink::Reply reply;
        QTimer* timer;
    };
    std::map<Id, PendingDispatch> dispatches_;
    Id nextDispatchId_ = 1;
    std::size_t keychainRequests_ = 0;
    std::map<QString, std::shared_ptr<SharedSuiteObserver>> observers_;
};

} // namespace lexmira
