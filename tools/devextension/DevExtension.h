// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "shared/UserInfo.h"

#include <QDBusConnection>
#include <QDBusContext>
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
// extension would, and com.lexmira.DevExtension1 so tests and scripts can steer it, through the
// adaptors generated from the two contract files (export it with ExportAdaptors). Every call of
// the extension's interface is appended to the record file as one JSON line. Main thread only.
class DevExtension final : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_PROPERTY(QString BrowserName READ browserName)

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

    // com.lexmira.Extension1, called by its adaptor from the bus. Each answers after the reply
    // delay, with the failure it was told to give if any; the return values are not the answer.
    bool GetState();
    void DispatchMessage(const QString& name, const QString& userInfo);
    void ShowPreferences();
    // The property BrowserName; it too waits for the reply delay, serving other calls meanwhile.
    QString browserName() const;

    // com.lexmira.DevExtension1, called by its adaptor from the bus.
    void SetEnabled(bool enabled);
    void FailNextDispatch(const QString& message);
    void FailEveryDispatch(const QString& message);
    void FailGetState(const QString& message);
    void FailShowPreferences(const QString& message);
    void ClearFailures();
    void SetEnableAfterPreferences(int milliseconds);
    void SetSignInOnExchange(bool enabled);
    void SetReplyDelay(uint milliseconds);
    void SetWrongStateType(bool wrongType);
    void SetBrowserName(const QString& name);
    void Quit();

private:
    // Answers the call being served with reply, once the reply delay has passed.
    void answerLater(const QDBusMessage& reply);
    void signIn(const QString& userInfo);
    void record(const QDBusMessage& call, const std::optional<QString>& failure);

    QDBusConnection bus_;
    Behaviour behaviour_;
    QFile recordFile_;
    SharedData& sharedData_;
};

} // namespace lexmira
