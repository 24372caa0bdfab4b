// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/BrokerBus.h"
#include "platform/linux/HostConnectionRecord.h"

#include <QDBusContext>
#include <QObject>

namespace lexmira {

// The object the broker exports at /com/lexmira/companion/ext. The adaptors generated from
// com.lexmira.Extension1.xml and com.lexmira.ExtensionHost1.xml call its slots; it hands each
// call to the broker's handler. Main thread only.
class BrokerObject final : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_PROPERTY(QString BrowserName READ browserName)

public:
    BrokerObject(BrokerBus::Handler& handler, QObject* parent);

    QString browserName() const { return handler_.browserName(); }

Q_SIGNALS:
    // A host attached: the bus watches its unique name from now on.
    void hostAttached(const QString& connection);

public Q_SLOTS:
    bool GetState();
    void DispatchMessage(const QString& name, const QString& userInfo);
    void ShowPreferences();
    void Attach(const QString& browser, const QString& browserName, const QString& extensionId);
    void Detach();
    QList<HostConnectionRecord> Connections();

private:
    BrokerBus::Handler& handler_;
};

} // namespace lexmira
