// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "shared/UserInfo.h"

#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QFile>
#include <QLoggingCategory>
#include <QString>

#include <chrono>
#include <optional>

namespace lexmira {

class SharedData;

// The peer's own troubles while it serves (its bus, its suite, its record file). Warnings are on.
Q_DECLARE_LOGGING_CATEGORY(lcDevExtension)

// Stands in for the browser extension's native side: answers com.lexmira.Extension1 as the
// extension would, and com.lexmira.DevExtension1 so tests and scripts can steer it. Every call
// of the extension's interface is appended to the record file as one JSON line. Main thread
// only.
class DevExtension final : public QDBusVirtualObject {
    Q_OBJECT

public:
    static const QString controlInterface;
    // The error every failure it is asked for is answered with.
    static const QString failureErrorName;

    struct Behaviour {
        bool enabled = true;
        // Fails the next DispatchMessage with this message, then only once.
        std::optional<QString> failNextDispatch;
        std::optional<QString> failEveryDispatch;
        std::optional<QString> failGetState;
        std::optional<QString> failShowPreferences;
        // After ShowPreferences ("the user opens the settings"), becomes enabled after this long.
        std::optional<std::chrono::milliseconds> enableAfterPreferences;
        // Answers an "oauthExchange" that carries a code and a challenge by storing signedInUser
        // as the shared "userInfo", as the extension does once its token exchange succeeded.
        bool signInOnExchange = false;
        UserInfo signedInUser{"dev-user", false, false, "dev-container"};
        // Every answer of the extension's interface waits this long.
        std::chrono::milliseconds replyDelay{0};
        // GetState answers a string instead of a Boolean.
        bool wrongStateType = false;
        // The browser the extension runs in, as the property BrowserName reports it; empty is
        // "not known", as with the extension in Safari.
        QString browserName;
    };

    // sharedData must outlive the object. recordPath empty records nothing.
    DevExtension(QDBusConnection bus, Behaviour behaviour, const QString& recordPath,
                 SharedData& sharedData, QObject* parent = nullptr);

    QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
    QDBusMessage answerExtensionCall(const QDBusMessage& call);
    QDBusMessage answerControlCall(const QDBusMessage& call);
    QDBusMessage answerPropertiesCall(const QDBusMessage& call);
    QDBusMessage dispatchMessage(const QDBusMessage& call, const QString& name,
                                 const QString& userInfo);
    void signIn(const QString& userInfo);
    void record(const QDBusMessage& call, const std::optional<QString>& failure);
    void send(const QDBusMessage& reply, std::chrono::milliseconds delay);

    QDBusConnection bus_;
    Behaviour behaviour_;
    QFile recordFile_;
    SharedData& sharedData_;
};

} // namespace lexmira
