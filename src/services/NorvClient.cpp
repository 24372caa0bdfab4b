// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "services/NorvClient.h"

#include "util/Json.h"
#include "util/ThreadHandOff.h"
#include "util/Utils.h"

#include <QCoreApplication>

#include <chrono>
#include <cstdlib>
#include <utility>

namespace lexmira {

namespace {

constexpr auto requestTimeout = std::chrono::seconds(60);

QString settingsKey()
{
    return QString::fromLatin1(NorvClient::nextPingDateKey.data(),
                               qsizetype(NorvClient::nextPingDateKey.size()));
}

std::optional<QDateTime> storedDate(const QVariant& stored)
{
    if (stored.typeId() != QMetaType::QDateTime)
        return std::nullopt;
    return stored.toDateTime();
}

} // namespace

int NorvClient::Platform::defaultRandomMinute()
{
    return int(arc4random_uniform(60));
}

NorvClient::NorvClient(std::string origin, QUrl url, std::string clientType,
                       std::string clientVersion, bool forceIsTest, bool isPingDisabled,
                       Platform platform)
    : platform_(std::move(platform))
    , nextPingDate_(storedDate(platform_.userDefaults->object(settingsKey())))
    , origin_(std::move(origin))
    , url_(std::move(url))
    , instanceId_(Utils::randomIdentifier())
    , clientType_(std::move(clientType))
    , clientVersion_(std::move(clientVersion))
    , forceIsTest_(forceIsTest)
    , isPingDisabled_(isPingDisabled)
{
    ping(false);
}

void NorvClient::setUserInfo(std::optional<UserInfo> userInfo)
{
    if (!userInfo) {
        userInfo_.reset();
        return;
    }
    const bool forcePing = userInfo_ && userInfo_->userId != userInfo->userId &&
                           !(userInfo_->isAnonymous && userInfo->isAnonymous);
    userInfo_ = std::move(userInfo);
    if (forcePing)
        ping(true);
    flush();
}

void NorvClient::track(const std::string& name, const std::optional<Props>& props,
                       Completion completion)
{
    if (userInfo_) {
        ping(false);
        if (userInfo_) {
            flush();
            send(name, props, std::move(completion));
        }
        return;
    }
    if (completion) {
        completion(false);
        return;
    }
    enqueue({name, props});
}

void NorvClient::flush()
{
    if (queue_.empty())
        return;
    const auto events = std::exchange(queue_, {});
    for (const auto& event : events)
        send(event.name, event.props, {});
}

void NorvClient::ping(bool force)
{
    if (isPingDisabled_)
        return;
    if (!force && !isPingDue(platform_.now(), nextPingDate_))
        return;
    const Props props{{"action", "ping"}};
    if (!userInfo_) {
        enqueue({std::string(pingEventName), props});
        return;
    }
    flush();
    send(std::string(pingEventName), props, {});
}

bool NorvClient::isPingDue(const QDateTime& now, const std::optional<QDateTime>& next)
{
    if (!next || *next <= now)
        return true;
    return now.secsTo(*next) >= 2 * secondsPerDay;
}

QDateTime NorvClient::nextPingDate(const QDateTime& after) const
{
    return nextPingDate(after, platform_.randomMinute());
}

QDateTime NorvClient::nextPingDate(const QDateTime& now, int minute)
{
    QDateTime date = now;
    if (now.time().hour() >= pingHour)
        date = date.addDays(1);
    if (date.isValid())
        date = date.addSecs((pingHour - date.time().hour()) * secondsPerHour);
    if (date.isValid())
        date = date.addSecs(qint64(minute - date.time().minute()) * 60);
    if (!date.isValid())
        return now.addSecs(secondsPerDay + 60 * qint64(minute) - 1800);
    return date;
}

nlohmann::ordered_json NorvClient::makeEventObject(const std::string& name,
                                                   const std::optional<Props>& props) const
{
    auto event = props && props->is_object() ? *props : nlohmann::ordered_json::object();
    event["eventName"] = clientType_ + "/" + name;
    event["userId"] = userInfo_->userId;
    event["isTest"] = userInfo_->isTestUser || forceIsTest_;
    return event;
}

nlohmann::ordered_json NorvClient::makeBatchBody(const nlohmann::ordered_json& event)
{
    ++batchId_;
    return nlohmann::ordered_json{{"client", clientType_},
                                  {"clientVersion", clientVersion_},
                                  {"containerId", userInfo_->containerId},
                                  {"instanceId", instanceId_},
                                  {"batchId", batchId_},
                                  {"events", nlohmann::ordered_json::array({event})}};
}

void NorvClient::send(const std::string& name, const std::optional<Props>& props,
                      Completion completion)
{
    if (!userInfo_)
        return;
    if (name == pingEventName) {
        const QDateTime next = nextPingDate(platform_.now());
        nextPingDate_ = next;
        platform_.userDefaults->setObject(QVariant(next.toUTC()), settingsKey());
    }
    const auto body = makeBatchBody(makeEventObject(name, props));

    HttpRequest request;
    request.url = url_;
    request.timeout = requestTimeout;
    // Only the status tells whether the events arrived.
    request.maxBodyBytes = 0;
    request.method = "POST";
    request.setValue(QByteArray::fromStdString(origin_), "Origin");
    request.setValue("application/json", "Content-Type");
    const auto bytes = Json::encode(body);
    if (!bytes) {
        // Delivered on the main thread, later, unlike the answer of a request that went out.
        if (completion)
            ThreadHandOff::queue(QCoreApplication::instance(),
                                 [completion = std::move(completion)] { completion(false); });
        return;
    }
    request.body = *bytes;
    platform_.httpClient->send(std::move(request), [completion = std::move(completion)](
                                                       std::optional<QByteArray>,
                                                       std::optional<HttpResponse> response,
                                                       std::optional<HttpError> error) {
        if (completion)
            completion(!error && response && response->statusCode == 200);
    });
}

void NorvClient::enqueue(Event event)
{
    if (queue_.size() < std::size_t(maxQueueSize))
        queue_.push_back(std::move(event));
}

} // namespace lexmira
