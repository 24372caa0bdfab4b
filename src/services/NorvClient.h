// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/HttpClient.h"
#include "platform/UserDefaults.h"
#include "shared/UserInfo.h"

#include <nlohmann/json.hpp>

#include <QDateTime>
#include <QUrl>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lexmira {

// The analytics client. Holds the current user, queues events while no user is known, posts each
// event as a batch of one with an increasing batch number, and sends a "ping" event once a day
// at a random minute past 03:00 local time, remembering when the next one is due across launches.
// Main thread only, apart from the completions described at track().
class NorvClient {
public:
    // Event properties: a JSON object whose values may be anything JSON holds.
    using Props = nlohmann::ordered_json;

    struct Event {
        std::string name;
        std::optional<Props> props;

        bool operator==(const Event&) const = default;
    };

    // true when the service accepted the event.
    using Completion = std::function<void(bool accepted)>;

    // What the client takes from its surroundings. The clock and the random minute are seams for
    // tests; the time zone of the clock's answer is the one the ping is scheduled in.
    struct Platform {
        std::shared_ptr<HttpClient> httpClient;
        // The application's own settings; never null, and outlives the client.
        UserDefaults* userDefaults = nullptr;
        std::function<QDateTime()> now = [] { return QDateTime::currentDateTime(); };
        // Uniform over 0-59.
        std::function<int()> randomMinute = defaultRandomMinute;

        static int defaultRandomMinute();
    };

    static constexpr int maxQueueSize = 50;
    static constexpr qint64 secondsPerHour = 3600;
    static constexpr qint64 secondsPerDay = 24 * secondsPerHour;
    static constexpr int pingHour = 3;
    static constexpr std::string_view pingEventName = "ping";
    static constexpr std::string_view nextPingDateKey = "norv.nextPingDate";

    // Reads the next ping date from the settings and pings if one is due. clientType prefixes
    // every event name.
    NorvClient(std::string origin, QUrl url, std::string clientType, std::string clientVersion,
               bool forceIsTest, bool isPingDisabled, Platform platform);
    NorvClient(const NorvClient&) = delete;
    NorvClient& operator=(const NorvClient&) = delete;

    const std::optional<UserInfo>& userInfo() const { return userInfo_; }
    // A new user flushes the queue. Changing from one user to another pings at once, unless both
    // are anonymous. None only forgets the user; the queue is kept.
    void setUserInfo(std::optional<UserInfo> userInfo);

    // With a user: catches up on a due ping, flushes the queue and sends the event. Without one:
    // a given completion is called with false at once and the event is dropped; with no
    // completion the event is queued (up to 50; later ones are dropped). The completion of a
    // sent event runs on the HTTP client's worker thread, except when the event cannot be
    // encoded: then it runs with false on the main thread, asynchronously.
    void track(const std::string& name, const std::optional<Props>& props,
               Completion completion = {});
    // Sends every queued event, in order, then empties the queue.
    void flush();
    // The daily ping: sent when force is set or a ping is due; queued while no user is known.
    void ping(bool force);

    // Whether a ping is due at now when the next one was set for next. A next date two days or
    // more ahead cannot have been set by this client and means the clock was changed: due.
    static bool isPingDue(const QDateTime& now, const std::optional<QDateTime>& next);
    // 03:<random minute> local time, today when now is before 03:00, otherwise tomorrow.
    QDateTime nextPingDate(const QDateTime& after) const;
    // The same for a given minute, in the time zone of now. Hours and minutes are added as
    // elapsed time and a day as a calendar day, carrying into the next unit; seconds are kept.
    static QDateTime nextPingDate(const QDateTime& now, int minute);

    // The event as sent: props, then "eventName", "userId" and "isTest", which overwrite
    // same-named props. Needs a user.
    nlohmann::ordered_json makeEventObject(const std::string& name,
                                           const std::optional<Props>& props) const;
    // Numbers the next batch (the first of a run is 1) and wraps event in it. Needs a user.
    nlohmann::ordered_json makeBatchBody(const nlohmann::ordered_json& event);
    // Posts one event now; does nothing without a user (and never calls completion then). A
    // ping moves the next ping date first, whatever the outcome of the request.
    void send(const std::string& name, const std::optional<Props>& props, Completion completion);

    const std::vector<Event>& queue() const { return queue_; }
    std::int64_t batchId() const { return batchId_; }
    const std::optional<QDateTime>& nextPingDate() const { return nextPingDate_; }
    const std::string& origin() const { return origin_; }
    const QUrl& url() const { return url_; }
    const std::string& instanceId() const { return instanceId_; }
    const std::string& clientType() const { return clientType_; }
    const std::string& clientVersion() const { return clientVersion_; }
    bool forceIsTest() const { return forceIsTest_; }
    bool isPingDisabled() const { return isPingDisabled_; }

private:
    void enqueue(Event event);

    Platform platform_;
    std::optional<UserInfo> userInfo_;
    std::vector<Event> queue_;
    std::int64_t batchId_ = 0;
    std::optional<QDateTime> nextPingDate_;
    std::string origin_;
    QUrl url_;
    std::string instanceId_;
    std::string clientType_;
    std::string clientVersion_;
    bool forceIsTest_;
    bool isPingDisabled_;
};

} // namespace lexmira
