// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/BrokerLink.h"

#include <QDBusContext>
#include <QObject>
#include <QString>

namespace lexmira {

// The object a native-messaging host exports at /com/lexmira/companion/ext/connection; the
// adaptor generated from com.lexmira.ExtensionConnection1.xml calls its slot. Only the broker
// that the host attached to may call it. Main thread only.
class HostConnectionObject final : public QObject, protected QDBusContext {
    Q_OBJECT

public:
    explicit HostConnectionObject(QObject* parent);

    // The unique name calls are accepted from; empty accepts none.
    void setBroker(const QString& uniqueName) { broker_ = uniqueName; }
    void setHandler(BrokerLink::DispatchHandler handler) { handler_ = std::move(handler); }

public Q_SLOTS:
    void Dispatch(const QString& name, const QString& userInfo);

private:
    QString broker_;
    BrokerLink::DispatchHandler handler_;
};

} // namespace lexmira
