// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "extensionhost/HostSession.h"

#include "extensionhost/AsyncKeychain.h"
#include "extensionhost/HostProtocol.h"
#include "platform/SharedSuite.h"
#include "util/ThreadHandOff.h"

#include <QPointer>
#include <QTimer>

#include <limits>

namespace lexmira {

namespace {

using Json = nlohmann::ordered_json;

// Change notifications of one key arrive on the suite's watcher thread and are queued to the
// session. The session removes its observers before it is destroyed, and removal waits for a
// running callback, so the session is alive whenever a callback runs.
class KeyObserver final : public SharedSuiteObserver {
public:
    KeyObserver(QObject* session, std::function<void()> changed)
        : session_(session)
        , changed_(std::move(changed))
    {
    }

    void observeValue(const QString&) override
    {
        ThreadHandOff::queue(session_, changed_);
    }

private:
    QObject* session_;
    std::function<void()> changed_;
};

std::optional<QByteArray> decodeBase64(const std::string& text)
{
    auto decoded = QByteArray::fromBase64Encoding(QByteArray::fromStdString(text),
                                                  QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded)
        return std::nullopt;
    return std::move(decoded.decoded);
}

Json base64OrNull(const std::optional<QByteArray>& bytes)
{
    if (!bytes)
        return nullptr;
    return bytes->toBase64().toStdString();
}

// Ids are integers; 1.5, "1" or true are not.
std::optional<std::int64_t> idOf(const Json& request, bool& malformed)
{
    malformed = false;
    const auto found = request.find("id");
    if (found == request.end())
        return std::nullopt;
    if (found->is_number_integer()) {
        if (found->is_number_unsigned() &&
            found->get<std::uint64_t>() > std::uint64_t(std::numeric_limits<std::int64_t>::max())) {
            malformed = true;
            return std::nullopt;
        }
        return found->get<std::int64_t>();
    }
    malformed = true;
    return std::nullopt;
}

} // namespace

HostSession::HostSession(BrokerLink::Peer peer, Services services, QObject* parent)
    : QObject(parent)
    , peer_(std::move(peer))
    , services_(std::move(services))
{
    services_.broker->setDispatchHandler(
        [session = QPointer<HostSession>(this)](const QString& name, const QString& userInfo,
                                                BrokerLink::Reply reply) {
            if (!session) {
                reply(QStringLiteral("The extension's connection has ended."));
                return;
            }
            session->dispatch(name, userInfo, std::move(reply));
        });
}

HostSession::~HostSession()
{
    for (const auto& [key, observer] : observers_)
        if (services_.suite)
            services_.suite->removeObserver(observer.get(), key);
    for (auto& [id, pending] : dispatches_)
        pending.reply(QStringLiteral("The extension's connection has ended."));
}

void HostSession::receive(const QByteArray& frame)
{
    if (finished_)
        return;
    const Json request = Json::parse(frame.begin(), frame.end(), nullptr, false);
    if (request.is_discarded()) {
        finish(QStringLiteral("a frame is not JSON"));
        return;
    }
    if (!request.is_object()) {
        finish(QStringLiteral("a frame is not a JSON object"));
        return;
    }
    bool malformedId = false;
    const auto id = idOf(request, malformedId);
    if (malformedId) {
        finish(QStringLiteral("a request's id is not an integer"));
        return;
    }
    handle(request, id);
}

void HostSession::handle(const Json& request, std::optional<Id> id)
{
    const auto type = request.find("type");
    if (type == request.end() || !type->is_string()) {
        if (id)
            sendError(id, "The request has no type.");
        else
            finish(QStringLiteral("a frame has no type"));
        return;
    }
    const std::string& name = type->get_ref<const std::string&>();
    if (name == "hello") {
        hello(request);
        return;
    }
    // Every other request is answered by id; without one there is nothing to answer.
    if (!id) {
        finish(
            QStringLiteral("a request of type \"%1\" has no id").arg(QString::fromStdString(name)));
        return;
    }
    if (!helloReceived_) {
        sendError(id, "Say hello first.");
        return;
    }
    if (name == "reply")
        reply(request, *id);
    else if (name == "suite.get")
        suiteGet(request, *id);
    else if (name == "suite.set")
        suiteSet(request, *id);
    else if (name == "suite.observe")
        suiteObserve(request, *id);
    else if (name == "keychain.get" || name == "keychain.set" || name == "keychain.delete")
        keychainRequest(name, request, *id);
    else
        sendError(id, "Unknown request type \"" + name + "\".");
}

void HostSession::hello(const Json& request)
{
    const auto version = request.find("version");
    if (version == request.end() || !version->is_number_integer() ||
        version->get<std::int64_t>() != HostProtocol::version) {
        sendError(std::nullopt, "This host speaks protocol version 1 only.");
        finish(QStringLiteral("the extension does not speak protocol version 1"));
        return;
    }
    const bool again = helloReceived_;
    helloReceived_ = true;
    const Json welcome = {{"type", "welcome"},
                          {"version", HostProtocol::version},
                          {"browser", peer_.browserName.toStdString()}};
    if (again) {
        send(welcome);
        return;
    }
    services_.broker->attach(peer_, this, [this, welcome](std::optional<QString> error) {
        if (finished_)
            return;
        if (error) {
            sendError(std::nullopt,
                      "The Lexmira broker cannot be reached: " + error->toStdString());
            finish(QStringLiteral("the broker cannot be reached: ") + *error);
            return;
        }
        send(welcome);
    });
}

void HostSession::reply(const Json& request, Id id)
{
    const auto error = request.find("error");
    if (error == request.end() || !(error->is_null() || error->is_string())) {
        sendError(id, "A reply needs \"error\": null or a text.");
        return;
    }
    if (!dispatches_.contains(id)) {
        sendError(id, "No message is waiting for a reply with this id.");
        return;
    }
    answerDispatch(id, error->is_null() ? std::nullopt
                                        : std::optional<QString>(QString::fromStdString(
                                              error->get_ref<const std::string&>())));
}

std::optional<std::string> HostSession::stringField(const Json& request, const char* name,
                                                    std::size_t maxBytes)
{
    const auto field = request.find(name);
    if (field == request.end() || !field->is_string())
        return std::nullopt;
    const auto& text = field->get_ref<const std::string&>();
    if (text.size() > maxBytes)
        return std::nullopt;
    return text;
}

bool HostSession::dataField(const Json& request, Id id, const std::string& missing,
                            std::optional<QByteArray>& bytes)
{
    const auto data = request.find("data");
    if (data == request.end() || !(data->is_null() || data->is_string())) {
        sendError(id, missing);
        return false;
    }
    bytes.reset();
    if (data->is_string()) {
        bytes = decodeBase64(data->get_ref<const std::string&>());
        if (!bytes) {
            sendError(id, "\"data\" is not base64.");
            return false;
        }
    }
    return true;
}

void HostSession::suiteGet(const Json& request, Id id)
{
    const auto key = stringField(request, "key", HostProtocol::maxKeyBytes);
    if (!key || key->empty()) {
        sendError(id, "A suite request needs \"key\": a text of 1 to 80 bytes.");
        return;
    }
    if (!services_.suite) {
        sendError(id, "The shared suite cannot be opened.");
        return;
    }
    const auto bytes = services_.suite->data(QString::fromStdString(*key));
    // Base64 grows the value by a third; what would not fit in a frame is refused, not cut.
    if (bytes && std::size_t(bytes->size()) / 3 * 4 + 64 > HostProtocol::maxFrameSize) {
        sendError(id, "The value is too large to send.");
        return;
    }
    send({{"type", "result"}, {"id", id}, {"data", base64OrNull(bytes)}});
}

void HostSession::suiteSet(const Json& request, Id id)
{
    const auto key = stringField(request, "key", HostProtocol::maxKeyBytes);
    if (!key || key->empty()) {
        sendError(id, "A suite request needs \"key\": a text of 1 to 80 bytes.");
        return;
    }
    std::optional<QByteArray> bytes;
    if (!dataField(request, id, "suite.set needs \"data\": base64 text, or null to remove the key.",
                   bytes))
        return;
    if (!services_.suite) {
        sendError(id, "The shared suite cannot be opened.");
        return;
    }
    services_.suite->setData(bytes, QString::fromStdString(*key));
    send({{"type", "result"}, {"id", id}});
}

void HostSession::suiteObserve(const Json& request, Id id)
{
    const auto key = stringField(request, "key", HostProtocol::maxKeyBytes);
    if (!key || key->empty()) {
        sendError(id, "A suite request needs \"key\": a text of 1 to 80 bytes.");
        return;
    }
    if (!services_.suite) {
        sendError(id, "The shared suite cannot be opened.");
        return;
    }
    const QString suiteKey = QString::fromStdString(*key);
    if (!observers_.contains(suiteKey)) {
        if (observers_.size() >= HostProtocol::maxObservedKeys) {
            sendError(id, "Too many keys are observed on this connection.");
            return;
        }
        auto observer =
            std::make_shared<KeyObserver>(this, [this, suiteKey] { keyChanged(suiteKey); });
        observers_.emplace(suiteKey, observer);
        services_.suite->addObserver(observer, suiteKey);
    }
    send({{"type", "result"}, {"id", id}});
}

void HostSession::keyChanged(const QString& key)
{
    if (!finished_ && observers_.contains(key))
        send({{"type", "suite.changed"}, {"key", key.toStdString()}});
}

void HostSession::keychainRequest(const std::string& type, const Json& request, Id id)
{
    const auto account = stringField(request, "account", HostProtocol::maxAccountBytes);
    if (!account) {
        sendError(id, "A keychain request needs \"account\": a text of at most 1024 bytes.");
        return;
    }
    if (keychainRequests_ >= HostProtocol::maxKeychainRequestsInFlight) {
        sendError(id, "Too many keychain requests are waiting; try again later.");
        return;
    }
    auto answer = [this, id](AsyncKeychain::Result result) {
        --keychainRequests_;
        if (finished_)
            return;
        send({{"type", "result"},
              {"id", id},
              {"status", result.status},
              {"data", base64OrNull(result.data)}});
    };
    if (type == "keychain.get") {
        const auto persistentRef = request.find("persistentRef");
        if (persistentRef != request.end() && !persistentRef->is_boolean()) {
            sendError(id, "\"persistentRef\" must be true or false.");
            return;
        }
        ++keychainRequests_;
        services_.keychain->get(*account,
                                persistentRef != request.end() && persistentRef->get<bool>(), this,
                                std::move(answer));
    } else if (type == "keychain.set") {
        std::optional<QByteArray> bytes;
        if (!dataField(request, id,
                       "keychain.set needs \"data\": base64 text, or null to delete the item.",
                       bytes))
            return;
        ++keychainRequests_;
        services_.keychain->set(*account, bytes, this, std::move(answer));
    } else {
        ++keychainRequests_;
        services_.keychain->remove(*account, this, std::move(answer));
    }
}

void HostSession::dispatch(const QString& name, const QString& userInfo, BrokerLink::Reply reply)
{
    if (finished_ || !helloReceived_) {
        reply(QStringLiteral("The extension is not connected."));
        return;
    }
    if (dispatches_.size() >= HostProtocol::maxDispatchesInFlight) {
        reply(QStringLiteral("Too many messages are waiting for the extension."));
        return;
    }
    Json info = nullptr;
    if (!userInfo.isEmpty()) {
        const QByteArray text = userInfo.toUtf8();
        info = Json::parse(text.begin(), text.end(), nullptr, false);
        if (!info.is_object()) {
            reply(QStringLiteral("The message's user info is not a JSON object."));
            return;
        }
    }
    const Id id = nextDispatchId_++;
    const Json frame = {{"type", "dispatch"},
                        {"id", id},
                        {"name", name.toStdString()},
                        {"userInfo", std::move(info)}};
    const std::string bytes = frame.dump(-1, ' ', false, Json::error_handler_t::replace);
    if (bytes.size() > HostProtocol::maxFrameSize) {
        reply(QStringLiteral("The message is too large for the extension."));
        return;
    }
    auto* timer = new QTimer(this);
    timer->setSingleShot(true);
    // A coarse timer may fire up to 5% early, and a reply within the 4 s must still count.
    timer->setTimerType(Qt::PreciseTimer);
    connect(timer, &QTimer::timeout, this, [this, id] {
        answerDispatch(id, QStringLiteral("The extension did not answer within 4 seconds."));
    });
    timer->start(HostProtocol::replyTimeout);
    dispatches_.emplace(id, PendingDispatch{std::move(reply), timer});
    Q_EMIT frameReady(QByteArray::fromStdString(bytes));
}

void HostSession::answerDispatch(Id id, std::optional<QString> error)
{
    const auto found = dispatches_.find(id);
    if (found == dispatches_.end())
        return;
    auto pending = std::move(found->second);
    dispatches_.erase(found);
    pending.timer->deleteLater();
    pending.reply(std::move(error));
}

void HostSession::send(const Json& frame)
{
    if (finished_)
        return;
    const std::string bytes = frame.dump(-1, ' ', false, Json::error_handler_t::replace);
    Q_EMIT frameReady(QByteArray::fromStdString(bytes));
}

void HostSession::sendError(std::optional<Id> id, const std::string& message)
{
    send({{"type", "error"}, {"id", id ? Json(*id) : Json(nullptr)}, {"message", message}});
}

void HostSession::finish(const QString& reason)
{
    if (finished_)
        return;
    finished_ = true;
    for (const auto& [key, observer] : observers_)
        if (services_.suite)
            services_.suite->removeObserver(observer.get(), key);
    observers_.clear();
    auto dispatches = std::move(dispatches_);
    dispatches_.clear();
    for (auto& [id, pending] : dispatches) {
        pending.timer->deleteLater();
        pending.reply(QStringLiteral("The extension's connection has ended."));
    }
    if (helloReceived_)
        services_.broker->detach();
    Q_EMIT finished(reason);
}

} // namespace lexmira
